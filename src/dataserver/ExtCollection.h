// Typed pointer arrays of the data objects and equipment elements.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace rivulet {

// A typed pointer array. When it owns its elements (every use does), clearing or destroying it deletes them.
template <typename T>
class CExtCollection {
  public:
    explicit CExtCollection(bool ownsElements = true) : ownsElements_(ownsElements) {}
    CExtCollection(const CExtCollection&) = delete;
    CExtCollection& operator=(const CExtCollection&) = delete;
    virtual ~CExtCollection() { RemoveAll(); }

    bool OwnsElements() const { return ownsElements_; }
    std::size_t GetSize() const { return elements_.size(); }
    bool IsEmpty() const { return elements_.empty(); }
    // Null past the end.
    T* GetAt(std::size_t index) const { return index < elements_.size() ? elements_[index] : nullptr; }
    // An owning collection takes `element` over.
    void Add(T* element) { elements_.push_back(element); }
    // The same, at `index` (at most the size).
    void InsertAt(std::size_t index, T* element) {
        elements_.insert(elements_.begin() + static_cast<std::ptrdiff_t>(std::min(index, elements_.size())),
                         element);
    }

    void RemoveAll() {
        if (ownsElements_) {
            for (T* element : elements_) delete element;
        }
        elements_.clear();
    }

  private:
    std::vector<T*> elements_;
    bool ownsElements_;
};

// Base of the elements of the equipment description: two hooks that do nothing and a text that is empty.
class CExtCollectionObject {
  public:
    virtual ~CExtCollectionObject() = default;
    virtual void ReservedNotify() {}
    virtual void ReservedReset() {}
    virtual std::string ReservedText() const { return {}; }
};

}  // namespace rivulet
