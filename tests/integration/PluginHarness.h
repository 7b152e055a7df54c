// What the integration tests share: the plug-in loaded once, as Conflux loads it, a fresh model for each
// test, error-record helpers and a scratch directory.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "host/Buffer.h"
#include "host/Plugin.h"

namespace rivulet::it {

inline host::Plugin& Driver() {
    static host::Plugin plugin(RIVULET_PLUGIN_PATH);
    return plugin;
}

// A record still holding the bytes of an earlier call: every export that clears it must wipe all 264.
inline host::ErrorRecord StaleRecord() {
    host::ErrorRecord err;
    err.code = static_cast<std::int32_t>(0xEEEEEEEE);
    std::memset(err.text, 0xEE, sizeof(err.text));
    return err;
}

inline bool IsBlank(const host::ErrorRecord& err) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(&err);
    return std::all_of(bytes, bytes + sizeof(err), [](unsigned char b) { return b == 0; });
}

inline std::string Message(const host::ErrorRecord& err) {
    return std::string(err.text, strnlen(err.text, sizeof(err.text)));
}

inline std::uint64_t Arg(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

// Each test has a model of its own; Cmd hands the driver a stale record in err_, or none at all.
class ModelTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(Driver().CreateInstance(&model_, nullptr), 0u); }
    void TearDown() override { EXPECT_EQ(Driver().DestroyInstance(model_, nullptr), 0u); }

    std::int32_t Cmd(std::uint32_t command, std::uint64_t argument = 0, std::uint32_t count = 0,
                     bool withRecord = true) {
        err_ = StaleRecord();
        return static_cast<std::int32_t>(
            Driver().Cmd(model_, 0, command, argument, count, withRecord ? &err_ : nullptr));
    }
    // GetVar (96): the access string's pointer at 8, a 512-byte value text at 16.
    std::string Get(const std::string& access, std::int32_t result = 0) {
        host::Buffer record(528, 0xCD);
        record.Put<std::uint64_t>(8, Arg(access.c_str()));
        EXPECT_EQ(Cmd(96, record.Address()), result) << access;
        return record.Text(16, 512);
    }
    // SetVar (97): the access string's pointer at 8, the value's pointer at 16.
    std::int32_t Set(const std::string& access, const std::string& value) {
        host::Buffer record(24);
        record.Put<std::uint64_t>(8, Arg(access.c_str()));
        record.Put<std::uint64_t>(16, Arg(value.c_str()));
        return Cmd(97, record.Address());
    }

    void* model_ = nullptr;
    host::ErrorRecord err_{};
};

// A directory of this process's own, removed with everything in it.
struct ScratchDir {
    const std::filesystem::path root =
        std::filesystem::temp_directory_path() / ("rivulet_it_" + std::to_string(::getpid()));

    ~ScratchDir() { std::filesystem::remove_all(root); }
    std::string File(const std::string& relative, const std::string& contents) const {
        std::filesystem::create_directories((root / relative).parent_path());
        std::ofstream(root / relative, std::ios::binary) << contents;
        return (root / relative).string();
    }
};

}  // namespace rivulet::it
