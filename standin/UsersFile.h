// The users a cluster dispatcher accepts: one "user token" pair per line, the token being the crypted
// password the client library sends. Blank lines and lines starting with '#' are skipped.
#pragma once

#include <map>
#include <stdexcept>
#include <string>

namespace rivulet::standin {

class UsersFileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class UsersFile {
  public:
    UsersFile() = default;
    // Throws UsersFileError naming the file and line when it is missing or malformed.
    static UsersFile Read(const std::string& path);
    static UsersFile Parse(const std::string& text, const std::string& origin);

    // Empty when the pair is accepted, else the reason for the refusal.
    std::string Check(const std::string& user, const std::string& token) const;
    std::size_t size() const { return tokens_.size(); }

  private:
    std::map<std::string, std::string> tokens_;
};

}  // namespace rivulet::standin
