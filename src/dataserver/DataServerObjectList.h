// A list of data objects that an access string reaches as "Well.Count", "Well[2].X" or "Well[{P1}].X".
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "dataserver/ExtDataServerTag.h"

namespace rivulet {

template <typename T>
class CExcStdDataServerObjectList {
  public:
    CExcStdDataServerObjectList() = default;
    CExcStdDataServerObjectList(const CExcStdDataServerObjectList&) = default;
    CExcStdDataServerObjectList& operator=(const CExcStdDataServerObjectList&) = default;
    virtual ~CExcStdDataServerObjectList() = default;

    // Takes the list's name (`listName`, or the type name when that is empty) unless `skipTypeName`, then
    // "$Count", the set-only "Add", "Reset" and "Delete", an item by "[n]" or by "[{key}]". Keys compare
    // exactly; the first item in list order with that name is the one reached.
    virtual std::int32_t ProcessAccessString(CExtDataServerTag& tag, bool skipTypeName, std::uint32_t spare,
                                             const std::string& listName);
    virtual std::int32_t ProcessItemAccessString(CExtDataServerTag& tag) {
        return ProcessAccessString(tag, true, 0, {});
    }
    virtual const char* GetTypeName() const = 0;

    std::size_t Count() const { return items_.size(); }
    bool IsEmpty() const { return items_.empty(); }
    // Null for an index outside the list.
    T* At(long long index) { return InRange(index) ? &items_[static_cast<std::size_t>(index)] : nullptr; }
    const T* At(long long index) const {
        return InRange(index) ? &items_[static_cast<std::size_t>(index)] : nullptr;
    }
    // The first item whose name is `key`, or null. Names are taken to be fixed once an item is listed.
    T* FindByName(const std::string& key);

    void Add(T item) {
        items_.push_back(std::move(item));
        indexValid_ = false;
    }
    void RemoveAt(std::size_t index) {
        items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(index));
        indexValid_ = false;
    }
    void Clear() {
        items_.clear();
        indexValid_ = false;
    }

    auto begin() { return items_.begin(); }
    auto end() { return items_.end(); }
    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

  private:
    bool InRange(long long index) const {
        return index >= 0 && static_cast<unsigned long long>(index) < items_.size();
    }
    void RebuildIndex();

    std::vector<T> items_;
    // Name to the position of the first item of that name, so that a key costs the same for every item.
    std::unordered_map<std::string, std::size_t> firstByName_;
    bool indexValid_ = false;
};

template <typename T>
std::int32_t CExcStdDataServerObjectList<T>::ProcessAccessString(CExtDataServerTag& tag, bool skipTypeName,
                                                                 std::uint32_t, const std::string& listName) {
    if (!skipTypeName && !tag.MatchName(listName.empty() ? GetTypeName() : listName.c_str())) return 0;

    auto count = static_cast<std::int32_t>(items_.size());
    if (tag.BindInt("$Count", count)) return 1;

    if (tag.GetMode() == CExtDataServerTag::kSet) {
        if (!tag.IsReadOnly()) {
            if (tag.MatchName("Add")) {
                Add(T());
                return 1;
            }
            if (tag.MatchName("Reset")) {
                Clear();
                return 1;
            }
        }
        std::int32_t index = -1;
        if (tag.BindInt("Delete", index)) {
            if (InRange(index)) {
                RemoveAt(static_cast<std::size_t>(index));
                return 1;
            }
            tag.SetErrorText("Attempting to remove an object at an invalid index");
            return 0;
        }
    }

    const long long index = tag.ReadIndex();
    if (index >= 0)
        return InRange(index) ? items_[static_cast<std::size_t>(index)].ProcessAccessString(tag, 0) : 0;

    T* item = FindByName(tag.ReadBracedName());
    return item != nullptr ? item->ProcessAccessString(tag, 0) : 0;
}

template <typename T>
T* CExcStdDataServerObjectList<T>::FindByName(const std::string& key) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!indexValid_) RebuildIndex();
        const auto found = firstByName_.find(key);
        if (found == firstByName_.end()) return nullptr;
        T& item = items_[found->second];
        if (item.GetDataServerName() == key) return &item;
        indexValid_ = false;  // an item was renamed in place
    }
    return nullptr;
}

template <typename T>
void CExcStdDataServerObjectList<T>::RebuildIndex() {
    firstByName_.clear();
    for (std::size_t i = 0; i < items_.size(); ++i) firstByName_.emplace(items_[i].GetDataServerName(), i);
    indexValid_ = true;
}

}  // namespace rivulet
