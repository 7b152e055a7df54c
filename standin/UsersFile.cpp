#include "standin/UsersFile.h"

#include <fstream>
#include <sstream>

namespace rivulet::standin {

UsersFile UsersFile::Read(const std::string& path) {
    std::ifstream in(path);
    if (!in) throw UsersFileError("Users file " + path + " cannot be read");
    std::stringstream text;
    text << in.rdbuf();
    return Parse(text.str(), path);
}

UsersFile UsersFile::Parse(const std::string& text, const std::string& origin) {
    UsersFile users;
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        std::istringstream words(line);
        std::string user, token, extra;
        if (!(words >> user) || user[0] == '#') continue;
        if (!(words >> token) || (words >> extra))
            throw UsersFileError(origin + ":" + std::to_string(number) + ": expected \"user token\"");
        if (!users.tokens_.emplace(user, token).second)
            throw UsersFileError(origin + ":" + std::to_string(number) + ": user " + user +
                                 " is listed twice");
    }
    return users;
}

std::string UsersFile::Check(const std::string& user, const std::string& token) const {
    const auto it = tokens_.find(user);
    if (user.empty()) return "This dispatcher needs a user name and password";
    if (it == tokens_.end()) return "Unknown user " + user;
    if (it->second != token) return "Wrong password for user " + user;
    return {};
}

}  // namespace rivulet::standin
