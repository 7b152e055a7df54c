// The cursor over one access string, such as "TNAVIGATOR.WELL[{P1}].GasRate". It lives on the stack for one
// GetVar, SetVar or DoCmd. Objects match their names against it, read or write their variables through the
// Bind operations, and report problems in its error text; they never write the host's error record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "dataserver/ExtDataServerCmdArgument.h"

namespace rivulet {

class CExtDataServerTag {
  public:
    enum Mode : std::int32_t { kGet = 0, kSet = 1, kCommand = 2 };

    // Names, keys and argument texts keep at most this many characters.
    static constexpr std::size_t kNameCapacity = 255;

    // A get writes its result into `buffer`, cut to `capacity` bytes with the terminator.
    static CExtDataServerTag ForGet(const char* access, char* buffer, std::size_t capacity);
    // A set reads the text to store from `value`; null reads as the empty text.
    static CExtDataServerTag ForSet(const char* access, const char* value);
    static CExtDataServerTag ForCommand(const char* access);
    // Allocating form: a get stores a malloc'ed result text in *slot (freeing what was there; the caller
    // frees the last one with free()), a set reads the text held in *slot.
    static CExtDataServerTag ForAllocating(const char* access, Mode mode, char** slot);

    CExtDataServerTag(const CExtDataServerTag&) = delete;
    CExtDataServerTag(CExtDataServerTag&&) = default;
    CExtDataServerTag& operator=(const CExtDataServerTag&) = delete;
    ~CExtDataServerTag() = default;

    Mode GetMode() const { return mode_; }
    bool IsReadOnly() const { return readOnly_; }
    std::size_t GetPosition() const { return position_; }
    const std::string& GetText() const { return text_; }

    const std::string& GetErrorText() const { return error_; }
    bool HasError() const { return !error_.empty(); }
    void SetErrorText(std::string text) { error_ = std::move(text); }
    void ClearErrorText() { error_.clear(); }

    // Each Bind matches `name` first and answers false without a match. On a match a get writes the
    // variable into the value text, a set reads the value text into the variable unless a read-only name
    // ("$Count") has been matched, and a command does nothing; the answer is true.
    bool BindInt(const char* name, std::int32_t& value);
    bool BindShort(const char* name, std::int16_t& value);
    bool BindBool(const char* name, bool& value);
    bool BindDouble(const char* name, double& value);
    bool BindString(const char* name, char* buffer, std::size_t size);
    bool BindStdString(const char* name, std::string& value);
    bool BindBstr(const char* name, std::wstring& value);
    // The name followed by "[n]". A missing or negative index answers false; one at or past the end sets
    // "Index out of range" and answers false.
    bool BindDoubleElement(const char* name, std::vector<double>& values);

    // Skips any "." and compares the next name, up to "(", "." or "[", without regard to case. A declared
    // name with a leading "$" is read-only. Moves past the name only on a match.
    bool MatchName(const char* name);
    // The next name, up to "." or "[", without moving.
    std::string PeekName() const;
    // The next name when it is spelt exactly one of two ways (such as "Target" and "TARGET"), moving past
    // it; any other spelling does not match.
    bool MatchSpelling(const char* name, const char* upper);
    // "[n]" with digits only: the number, moving past "]". -1, without moving, for anything else
    // (including "[{").
    long long ReadIndex();
    // "[{key}]": the key, moving past the two characters after it. The empty text, without moving, when
    // the position does not hold "[{".
    std::string ReadBracedName();

    // Reads a command "name(arg, ...)" at the position. -1 when `name` is given and does not match; 0 on
    // success, or when there is no "(" and `minimum` is below 1; 1 with "Bad argument", "Syntax error" or
    // "Bad number of arguments" in the error text.
    int ParseCommand(const char* name, CExtDataServerCmdArgumentCollection& arguments, int minimum,
                     int maximum);

    // Reads the value text as reals separated by "|" or "}" into `values` of `count` entries. 0 on success,
    // 1 with the reason in `error`.
    int ParseValueArray(double* values, int count, std::string& error) const;

    void SetValueText(const char* text);
    void SetValueInt(std::int32_t value);
    void SetValueDouble(double value);
    // The caller's text in set mode, the result so far in get mode; never null.
    const char* GetValueText() const;

  private:
    CExtDataServerTag(const char* access, Mode mode);

    void StoreResult(const char* text, std::size_t allocation);
    // The token at `start` after any ".", ending at one of `stops`, and where it ends.
    std::string_view TokenAt(const char* stops, std::size_t* tokenEnd) const;

    std::string text_;
    std::size_t position_ = 0;
    // The name token at position_ as MatchName reads it, found once per position: an object tries its
    // names against the same token one after another.
    std::size_t nameAt_ = std::string::npos;
    std::size_t nameStart_ = 0;
    std::size_t nameLength_ = 0;
    std::size_t nameEnd_ = 0;
    Mode mode_;
    bool readOnly_ = false;
    std::string error_;
    char** slot_ = nullptr;
    char* buffer_ = nullptr;
    std::size_t capacity_ = 0;
    const char* input_ = nullptr;
    bool allocating_ = false;
};

}  // namespace rivulet
