#include "dataserver/ExtDataServerTag.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "common/ValueArray.h"

namespace rivulet {

namespace {

// A number's result text is allocated at this size.
constexpr std::size_t kNumberAllocation = 32;

// Digits with an optional sign, as atoi reads them; atoi's result for an overflowing text is what the C
// library's strtol gives, narrowed.
std::int32_t ReadInt(const char* text) {
    return static_cast<std::int32_t>(std::strtol(text, nullptr, 10));
}

double ReadReal(const char* text) {
    return std::strtod(text, nullptr);
}

std::wstring Widen(const std::string& text) {
    std::wstring wide;
    std::mbstate_t state{};
    const char* source = text.c_str();
    const std::size_t length = std::mbsrtowcs(nullptr, &source, 0, &state);
    if (length == static_cast<std::size_t>(-1)) {
        for (unsigned char c : text) wide.push_back(static_cast<wchar_t>(c));
        return wide;
    }
    wide.resize(length);
    source = text.c_str();
    state = {};
    std::mbsrtowcs(wide.data(), &source, length, &state);
    return wide;
}

std::string Narrow(const std::wstring& wide) {
    std::string text;
    std::mbstate_t state{};
    const wchar_t* source = wide.c_str();
    const std::size_t length = std::wcsrtombs(nullptr, &source, 0, &state);
    if (length == static_cast<std::size_t>(-1)) {
        for (wchar_t c : wide) text.push_back(c >= 0 && c < 0x80 ? static_cast<char>(c) : '?');
        return text;
    }
    text.resize(length);
    source = wide.c_str();
    state = {};
    std::wcsrtombs(text.data(), &source, length, &state);
    return text;
}

}  // namespace

CExtDataServerTag::CExtDataServerTag(const char* access, Mode mode)
    : text_(access != nullptr ? access : ""), mode_(mode) {}

CExtDataServerTag CExtDataServerTag::ForGet(const char* access, char* buffer, std::size_t capacity) {
    CExtDataServerTag tag(access, kGet);
    tag.buffer_ = buffer;
    tag.capacity_ = buffer != nullptr ? capacity : 0;
    if (tag.capacity_ > 0) buffer[0] = '\0';
    return tag;
}

CExtDataServerTag CExtDataServerTag::ForSet(const char* access, const char* value) {
    CExtDataServerTag tag(access, kSet);
    tag.input_ = value;
    return tag;
}

CExtDataServerTag CExtDataServerTag::ForCommand(const char* access) {
    return CExtDataServerTag(access, kCommand);
}

CExtDataServerTag CExtDataServerTag::ForAllocating(const char* access, Mode mode, char** slot) {
    CExtDataServerTag tag(access, mode);
    tag.slot_ = slot;
    tag.allocating_ = slot != nullptr;
    return tag;
}

// ---- results ----

void CExtDataServerTag::StoreResult(const char* text, std::size_t allocation) {
    if (allocating_) {
        std::free(*slot_);
        *slot_ = static_cast<char*>(std::malloc(allocation));
        if (*slot_ != nullptr) std::snprintf(*slot_, allocation, "%s", text);
        return;
    }
    // Only a get owns a buffer to write; the text of a set belongs to the caller.
    if (mode_ == kGet && capacity_ > 0) std::snprintf(buffer_, capacity_, "%s", text);
}

void CExtDataServerTag::SetValueText(const char* text) {
    if (text == nullptr) text = "";
    StoreResult(text, std::strlen(text) + 1);
}

void CExtDataServerTag::SetValueInt(std::int32_t value) {
    char text[kNumberAllocation];
    std::snprintf(text, sizeof text, "%d", value);
    StoreResult(text, kNumberAllocation);
}

void CExtDataServerTag::SetValueDouble(double value) {
    char text[kNumberAllocation];
    std::snprintf(text, sizeof text, "%g", value);
    StoreResult(text, kNumberAllocation);
}

const char* CExtDataServerTag::GetValueText() const {
    const char* text = nullptr;
    if (allocating_) {
        text = *slot_;
    } else if (mode_ == kGet) {
        text = capacity_ > 0 ? buffer_ : nullptr;
    } else {
        text = input_;
    }
    return text != nullptr ? text : "";
}

// ---- binding ----

bool CExtDataServerTag::BindInt(const char* name, std::int32_t& value) {
    if (!MatchName(name)) return false;
    if (mode_ == kGet) {
        SetValueInt(value);
    } else if (mode_ == kSet && !readOnly_) {
        value = ReadInt(GetValueText());
    }
    return true;
}

bool CExtDataServerTag::BindShort(const char* name, std::int16_t& value) {
    std::int32_t wide = value;
    if (!BindInt(name, wide)) return false;
    if (mode_ == kSet) value = static_cast<std::int16_t>(wide);
    return true;
}

bool CExtDataServerTag::BindBool(const char* name, bool& value) {
    std::int32_t number = value ? 1 : 0;
    if (!BindInt(name, number)) return false;
    if (mode_ == kSet) value = number != 0;
    return true;
}

bool CExtDataServerTag::BindDouble(const char* name, double& value) {
    if (!MatchName(name)) return false;
    if (mode_ == kGet) {
        SetValueDouble(value);
    } else if (mode_ == kSet && !readOnly_) {
        // A date such as 1/2/2020 is not recognised as one here: it reads as the number 1.
        value = ReadReal(GetValueText());
    }
    return true;
}

bool CExtDataServerTag::BindString(const char* name, char* buffer, std::size_t size) {
    if (!MatchName(name)) return false;
    if (buffer == nullptr || size == 0) return true;
    if (mode_ == kGet) {
        SetValueText(std::string(buffer, strnlen(buffer, size)).c_str());
    } else if (mode_ == kSet && !readOnly_) {
        std::snprintf(buffer, size, "%s", GetValueText());
    }
    return true;
}

bool CExtDataServerTag::BindStdString(const char* name, std::string& value) {
    if (!MatchName(name)) return false;
    if (mode_ == kGet) {
        SetValueText(value.c_str());
    } else if (mode_ == kSet && !readOnly_) {
        value = GetValueText();
    }
    return true;
}

bool CExtDataServerTag::BindBstr(const char* name, std::wstring& value) {
    std::string text = Narrow(value);
    if (!BindStdString(name, text)) return false;
    if (mode_ == kSet && !readOnly_) value = Widen(text);
    return true;
}

bool CExtDataServerTag::BindDoubleElement(const char* name, std::vector<double>& values) {
    if (!MatchName(name)) return false;
    const long long index = ReadIndex();
    if (index < 0) return false;
    if (static_cast<unsigned long long>(index) >= values.size()) {
        error_ = "Index out of range";
        return false;
    }
    double& element = values[static_cast<std::size_t>(index)];
    if (mode_ == kGet) {
        SetValueDouble(element);
    } else if (mode_ == kSet && !readOnly_) {
        element = ReadReal(GetValueText());
    }
    return true;
}

// ---- walking ----

std::string_view CExtDataServerTag::TokenAt(const char* stops, std::size_t* tokenEnd) const {
    std::size_t start = std::min(position_, text_.size());
    while (start < text_.size() && text_[start] == '.') ++start;
    std::size_t end = text_.find_first_of(stops, start);
    if (end == std::string::npos) end = text_.size();
    if (tokenEnd != nullptr) *tokenEnd = end;
    return std::string_view(text_).substr(start, std::min(end - start, kNameCapacity));
}

bool CExtDataServerTag::MatchName(const char* name) {
    if (name == nullptr) return false;
    if (nameAt_ != position_) {
        const std::string_view token = TokenAt("(.[", &nameEnd_);
        nameStart_ = static_cast<std::size_t>(token.data() - text_.data());
        nameLength_ = token.size();
        nameAt_ = position_;
    }
    const bool declaredReadOnly = name[0] == '$';
    const char* declared = declaredReadOnly ? name + 1 : name;
    // Compared in place: every object tries its names in turn, and most do not match.
    if (std::strlen(declared) != nameLength_ ||
        strncasecmp(text_.data() + nameStart_, declared, nameLength_) != 0)
        return false;
    position_ = nameEnd_;
    if (declaredReadOnly) readOnly_ = true;
    return true;
}

std::string CExtDataServerTag::PeekName() const {
    return std::string(TokenAt(".[", nullptr));
}

bool CExtDataServerTag::MatchSpelling(const char* name, const char* upper) {
    std::size_t end = 0;
    const std::string_view next = TokenAt(".[", &end);
    if (next != name && next != upper) return false;
    position_ = end;
    return true;
}

long long CExtDataServerTag::ReadIndex() {
    // Indexes beyond any list are held at this value rather than overflowing.
    constexpr long long kLargest = 1'000'000'000'000LL;
    const std::size_t size = text_.size();
    if (position_ >= size || text_[position_] != '[') return -1;
    if (position_ + 1 < size && text_[position_ + 1] == '{') return -1;
    long long index = 0;
    std::size_t at = position_ + 1;
    for (; at < size && text_[at] >= '0' && text_[at] <= '9'; ++at) {
        index = std::min(kLargest, index * 10 + (text_[at] - '0'));
    }
    if (at >= size || text_[at] != ']') return -1;
    position_ = at + 1;
    return index;
}

std::string CExtDataServerTag::ReadBracedName() {
    const std::size_t size = text_.size();
    if (position_ + 1 >= size || text_[position_] != '[' || text_[position_ + 1] != '{') return {};
    const std::size_t start = position_ + 2;
    std::size_t close = text_.find('}', start);
    if (close == std::string::npos) close = size;
    std::string key = text_.substr(start, std::min(close - start, kNameCapacity));
    // The "]" after the "}" is taken on trust: two characters are passed, whatever they are.
    position_ = std::min(close + 2, size);
    return key;
}

int CExtDataServerTag::ParseValueArray(double* values, int count, std::string& error) const {
    return ParseValueArrayText(GetValueText(), values, count, error);
}

}  // namespace rivulet
