// Commands such as "RunToTime(3650)": the argument list after the command's name.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "dataserver/ExtDataServerTag.h"

namespace rivulet {

namespace {

bool IsNumericCharacter(char c) {
    return (c >= '0' && c <= '9') || c == '+' || c == '-';
}

CExtDataServerCmdArgument* MakeArgument(const std::string& text) {
    auto* argument = new CExtDataServerCmdArgument;
    std::snprintf(argument->text, sizeof argument->text, "%s", text.c_str());
    return argument;
}

// An unquoted argument: numbers are read from its text, and its kind follows from the characters seen.
CExtDataServerCmdArgument* MakeUnquoted(const std::string& text, bool numeric) {
    CExtDataServerCmdArgument* argument = MakeArgument(text);
    argument->realValue = std::strtod(argument->text, nullptr);
    argument->integerValue = static_cast<std::int32_t>(std::strtol(argument->text, nullptr, 10));
    const char first = argument->text[0];
    if (numeric) {
        argument->kind = CExtDataServerCmdArgument::kInteger;
    } else if ((first >= '0' && first <= '9') || first == '+' || first == '-' || first == '.') {
        argument->kind = CExtDataServerCmdArgument::kReal;
    } else {
        argument->kind = CExtDataServerCmdArgument::kWord;
    }
    return argument;
}

CExtDataServerCmdArgument* MakeQuoted(const std::string& text) {
    CExtDataServerCmdArgument* argument = MakeArgument(text);
    argument->kind = CExtDataServerCmdArgument::kQuoted;
    argument->realValue = CExtDataServerCmdArgument::kQuotedReal;
    return argument;
}

}  // namespace

int CExtDataServerTag::ParseCommand(const char* name, CExtDataServerCmdArgumentCollection& arguments,
                                    int minimum, int maximum) {
    arguments.RemoveAll();
    if (name != nullptr && !MatchName(name)) return -1;

    const std::size_t size = text_.size();
    std::size_t at = text_.find('(', std::min(position_, size));
    if (at == std::string::npos) {
        if (minimum < 1) return 0;
        error_ = "Bad argument";
        return 1;
    }

    constexpr std::size_t kNoToken = std::string::npos;
    std::size_t tokenStart = kNoToken;
    std::size_t tokenEnd = 0;  // one past the last character of the token that is not a blank
    bool numeric = true;
    std::optional<char> closing;  // the character that closes the open quote

    auto resetToken = [&] {
        tokenStart = kNoToken;
        numeric = true;
    };

    for (;; ++at) {
        if (at >= size) {
            error_ = "Syntax error";
            return 1;
        }
        const char c = text_[at];

        if (closing) {
            // A doubled closing character stays in the text, doubled; an empty pair of like quotes does
            // not close here, an empty pair of braces does.
            const char before = text_[at - 1];
            const char after = at + 1 < size ? text_[at + 1] : '\0';
            const std::size_t length = at - tokenStart;
            if (c == *closing && ((before != c && after != c) || length == 1)) {
                arguments.Add(MakeQuoted(text_.substr(tokenStart, length)));
                closing.reset();
                resetToken();
            }
            continue;
        }

        if (c == ' ' || c == '\t') continue;
        if ((c == '"' || c == '\'' || c == '{') && tokenStart == kNoToken) {
            closing = c == '{' ? '}' : c;
            tokenStart = at + 1;
            continue;
        }
        if (c == '(' || c == ')' || c == ',') {
            if (tokenStart != kNoToken) {
                arguments.Add(MakeUnquoted(text_.substr(tokenStart, tokenEnd - tokenStart), numeric));
                resetToken();
            }
            if (c == ')') break;
            continue;
        }
        if (!IsNumericCharacter(c)) numeric = false;
        if (tokenStart == kNoToken) tokenStart = at;
        tokenEnd = at + 1;
    }

    position_ = at + 1;
    const auto count = static_cast<long long>(arguments.GetSize());
    if (count < minimum || count > maximum) {
        error_ = "Bad number of arguments";
        return 1;
    }
    return 0;
}

}  // namespace rivulet
