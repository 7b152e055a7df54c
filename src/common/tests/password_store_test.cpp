#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "common/Blowfish.h"
#include "common/PasswordStore.h"

namespace rivulet {
namespace {

using Bytes = std::vector<std::uint8_t>;
using testing::ThrowsMessage;

Bytes FromHex(const std::string& hex) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
}

Blowfish StandardCipher(const Bytes& key, std::uint64_t chain = 0) {
    return Blowfish(key.data(), key.size(), Blowfish::Tables::kStandard, chain);
}

// That the default tables are our own is pinned by the stored password of fixed ticks below.
TEST(Blowfish, StandardTablesGivePublishedVectors) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        // key, plain, cipher
        {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
        {"0123456789ABCDEF", "1111111111111111", "61F9C3802281B096"},
        {"F0", "FEDCBA9876543210", "F9AD597C49DB005E"},  // short keys repeat
        {"F0E1D2", "FEDCBA9876543210", "E9C2B70A1BC65CF3"},
        {"F0E1D2C3B4A5968778695A4B3C2D1E0F0011223344556677", "FEDCBA9876543210", "05044B62FA52D080"}};
    for (const auto& [keyHex, plainHex, cipherHex] : cases) {
        SCOPED_TRACE(keyHex);
        const Bytes key = FromHex(keyHex), plain = FromHex(plainHex), cipher = FromHex(cipherHex);
        Bytes out(8);
        StandardCipher(key).Encrypt(plain.data(), out.data(), out.size());
        EXPECT_EQ(out, cipher);
        StandardCipher(key).Decrypt(out.data(), out.data(), out.size());
        EXPECT_EQ(out, plain);
    }
}

TEST(Blowfish, KeyBeyondFiftySixBytesIsCut) {
    const auto encrypt = [](std::uint8_t keyLength) {
        Bytes key(keyLength), out(8);
        for (std::uint8_t i = 0; i < keyLength; ++i) key[i] = i + 1;
        StandardCipher(key).Encrypt(out.data(), out.data(), out.size());
        return out;
    };
    EXPECT_EQ(encrypt(60), encrypt(56));
    EXPECT_NE(encrypt(56), encrypt(55));
}

TEST(Blowfish, ChainingModesMatchPublishedVectorsAndRoundTrip) {
    const Bytes key = FromHex("0123456789ABCDEFF0E1D2C3B4A59687");
    const std::string text("7654321 Now is the time for \0\0\0\0", 32);
    const Bytes plain(text.begin(), text.end());
    const std::pair<Blowfish::Mode, const char*> cases[] = {
        {Blowfish::Mode::kCbc, "6B77B4D63006DEE605B156E27403979358DEB9E7154616D9"},
        {Blowfish::Mode::kCfb, "E73214A2822139CAF26ECF6D2EB9E76E3DA3DE04D1517200"}};
    for (const auto& [mode, cipherHex] : cases) {  // the cipher text's first 24 bytes
        Blowfish cipher = StandardCipher(key, 0xFEDCBA9876543210);
        Bytes out(plain.size());
        cipher.Encrypt(plain.data(), out.data(), 16, mode);  // the chain carries over between calls
        cipher.Encrypt(plain.data() + 16, out.data() + 16, 16, mode);
        EXPECT_EQ(Bytes(out.begin(), out.begin() + 24), FromHex(cipherHex));
        cipher.ResetChain();
        cipher.Decrypt(out.data(), out.data(), out.size(), mode);
        EXPECT_EQ(out, plain);
    }
}

TEST(Blowfish, RejectsEmptyKeyAndBadBufferLengths) {
    std::uint8_t data[16] = {1};
    EXPECT_THAT([&] { Blowfish(data, 0); }, ThrowsMessage<std::invalid_argument>("Incorrect key length"));
    EXPECT_THAT([&] { Blowfish(data, 1).Encrypt(data, data, 0); },
                ThrowsMessage<std::invalid_argument>("Incorrect buffer length"));
    EXPECT_THAT([&] { Blowfish(data, 1).Decrypt(data, data, 12, Blowfish::Mode::kCbc); },
                ThrowsMessage<std::invalid_argument>("Incorrect buffer length"));
}

TEST(PasswordStore, StoredLengthFollowsPlainLengthAndReadsBack) {
    const std::pair<std::string, std::size_t> cases[] = {
        {"x", 32}, {"1234567", 32}, {"12345678", 32}, {"123456789", 48}, {"sixteen chars\xF6\xFF!", 48}};
    for (const auto& [text, storedLength] : cases) {
        SCOPED_TRACE(text);
        const std::string stored = StorePassword(text);
        EXPECT_EQ(stored.size(), storedLength);
        std::string plain;
        EXPECT_EQ(ReadStoredPassword(stored, plain), kPasswordRead);
        EXPECT_EQ(plain, text);

        std::vector<char> buffer(2 * text.size() + 32);
        ASSERT_TRUE(StorePassword(text.c_str(), buffer.data(), buffer.size()));
        EXPECT_EQ(ReadStoredPassword(buffer.data(), buffer.data(), buffer.size()), kPasswordRead);
        EXPECT_EQ(std::string(buffer.data()), text);
    }
    EXPECT_NE(StorePassword("same"), StorePassword("same"));
}

TEST(PasswordStore, OwnTablesAndKeyFromTicksAreFixed) {
    const PasswordTickSource previous = SetPasswordTickSource([]() -> std::uint64_t { return 0; });
    const std::string stored = StorePassword("Secret!12");
    SetPasswordTickSource(previous);
    // A change here makes every password already stored unreadable.
    EXPECT_EQ(stored, "0000000000000000D7ABFA75A6CECACC8863B7A4D7042199");
}

TEST(PasswordStore, MalformedTextsReadAsEmptyAndMaskPassesThrough) {
    const std::string valid = StorePassword("password1");  // 48 characters
    std::string lower = valid;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    using C = std::tuple<std::string, int, const char*>;
    for (const auto& [stored, result, expected] :
         {C{lower, kPasswordRejected, ""}, C{valid.substr(0, 16), kPasswordRejected, ""},
          C{valid.substr(0, 17), kPasswordRead, ""}, C{valid.substr(0, 31), kPasswordRead, ""},
          C{valid + "0123456789ABCDE", kPasswordRead, "password1"}, C{"", kPasswordRead, ""},
          C{kPasswordMask, kPasswordRead, kPasswordMask}}) {
        SCOPED_TRACE(stored);
        std::string plain = "stale";
        EXPECT_EQ(ReadStoredPassword(stored, plain), result);
        EXPECT_EQ(plain, expected);
    }
    EXPECT_EQ(StorePassword(""), "");
    EXPECT_EQ(StorePassword("********"), "********");
}

TEST(PasswordStore, BuffersAreNeverOverrun) {
    char small[32] = "untouched";
    EXPECT_FALSE(StorePassword("x", small, sizeof small));  // 32 characters leave no room for the terminator
    EXPECT_STREQ(small, "");
    const std::string stored = StorePassword("longer password");
    EXPECT_EQ(ReadStoredPassword(stored.c_str(), small, 5), kPasswordRead);
    EXPECT_STREQ(small, "long");
}

TEST(PasswordHex, ReadsAtMostTwoUpperCaseDigits) {
    const std::pair<const char*, std::uint8_t> cases[] = {
        {"A0", 0xA0}, {"FF", 0xFF}, {"123", 0x12}, {"7Z", 0x07}, {"Z7", 0x00}, {"a1", 0x00}, {"9", 0x09}};
    for (const auto& [text, byte] : cases)
        EXPECT_EQ(password_hex::Parse(text, std::strlen(text)), byte) << text;
    char hex[2];
    password_hex::Format(0xC5, hex);
    EXPECT_EQ(std::string(hex, 2), "C5");
}

}  // namespace
}  // namespace rivulet
