#include "platform/RegFile.h"

#include <strings.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace rivulet {

namespace {

constexpr char kHeader[] = "REGEDIT4";

// A quoted text starting at `at` (on the opening quote), with its escapes undone: \\, \", and \n and \r
// for the line breaks that a text such as a list of queues holds. Moves `at` past the closing quote; false
// when there is none.
bool ReadQuoted(const std::string& line, std::size_t& at, std::string& out) {
    out.clear();
    for (++at; at < line.size(); ++at) {
        char c = line[at];
        if (c == '"') {
            ++at;
            return true;
        }
        if (c == '\\' && at + 1 < line.size()) {
            c = line[++at];
            if (c == 'n') c = '\n';
            if (c == 'r') c = '\r';
        }
        out.push_back(c);
    }
    return false;
}

std::string Quoted(const std::string& text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else {
            if (c == '"' || c == '\\') out.push_back('\\');
            out.push_back(c);
        }
    }
    out.push_back('"');
    return out;
}

bool ParseDword(const std::string& text, std::uint32_t& number) {
    constexpr char kPrefix[] = "dword:";
    if (text.size() != sizeof kPrefix - 1 + 8 ||
        strncasecmp(text.c_str(), kPrefix, sizeof kPrefix - 1) != 0) {
        return false;
    }
    const std::string digits = text.substr(sizeof kPrefix - 1);
    if (digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) return false;
    number = static_cast<std::uint32_t>(std::strtoul(digits.c_str(), nullptr, 16));
    return true;
}

}  // namespace

bool CaseInsensitiveLess::operator()(const std::string& a, const std::string& b) const {
    return strcasecmp(a.c_str(), b.c_str()) < 0;
}

RegistryKeys ParseRegFile(const std::string& text) {
    RegistryKeys keys;
    RegistryValues* current = nullptr;
    std::size_t entries = 0;
    std::istringstream lines(text.size() > kMaxRegFileBytes ? std::string() : text);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.size() > kMaxRegLineLength) continue;  // not a line of ours
        while (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
            std::string key = line.substr(1, line.size() - 2);
            const auto found = keys.find(key);
            if (found == keys.end() && entries >= kMaxRegEntries) {
                current = nullptr;
                continue;
            }
            if (found == keys.end()) ++entries;
            current = &keys[std::move(key)];
            continue;
        }
        if (current == nullptr || line.empty() || line.front() != '"') continue;
        std::size_t at = 0;
        std::string name;
        if (!ReadQuoted(line, at, name) || at >= line.size() || line[at] != '=') continue;
        const std::string rest = line.substr(at + 1);
        RegistryValue value;
        if (!rest.empty() && rest.front() == '"') {
            std::size_t from = 0;
            if (!ReadQuoted(rest, from, value.text) || from != rest.size()) continue;
            value.kind = RegistryValue::Kind::String;
        } else if (ParseDword(rest, value.number)) {
            value.kind = RegistryValue::Kind::Dword;
        } else {
            value.kind = RegistryValue::Kind::Other;
            value.text = rest;
        }
        const auto found = current->find(name);
        if (found != current->end()) {
            found->second = std::move(value);
        } else if (entries < kMaxRegEntries) {
            ++entries;
            current->emplace(std::move(name), std::move(value));
        }
    }
    return keys;
}

std::string FormatRegFile(const RegistryKeys& keys) {
    std::string out = std::string(kHeader) + "\n";
    for (const auto& [key, values] : keys) {
        out += "\n[" + key + "]\n";
        for (const auto& [name, value] : values) {
            out += Quoted(name) + "=";
            switch (value.kind) {
                case RegistryValue::Kind::String:
                    out += Quoted(value.text);
                    break;
                case RegistryValue::Kind::Dword: {
                    char number[16];
                    std::snprintf(number, sizeof number, "dword:%08x", value.number);
                    out += number;
                    break;
                }
                case RegistryValue::Kind::Other:
                    out += value.text;
                    break;
            }
            out += "\n";
        }
    }
    return out;
}

}  // namespace rivulet
