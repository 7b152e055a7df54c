// Arbitrary bytes for the stream readers of the case and the inflow objects. The first byte picks the
// object and the stream version; the rest follows a valid archive header. An object that loads must store
// and load again to the same bytes.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "case/CaseSettings.h"
#include "common/BinaryArchive.h"
#include "dataserver/IprPoint.h"
#include "dataserver/IprTable.h"
#include "dataserver/OperatingPoint.h"

using namespace rivulet;

namespace {

std::unique_ptr<CExtDataServerObject> MakeObject(int kind) {
    switch (kind) {
        case 0:
            return std::make_unique<CaseSettings>();
        case 1:
            return std::make_unique<IprTable>();
        case 2:
            return std::make_unique<IprPoint>("Point");
        default:
            return std::make_unique<OperatingPoint>();
    }
}

std::vector<unsigned char> Store(CExtDataServerObject& object, std::int32_t version, std::size_t capacity) {
    std::vector<unsigned char> bytes(capacity + 64);
    BinaryArchive archive(bytes.data(), bytes.size(), ArchiveDirection::Store);
    if (object.StreamData(&archive, version) != 0) __builtin_trap();
    bytes.resize(archive.Position());
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const int kind = data[0] & 0x03;
    const std::int32_t version = static_cast<std::int32_t>(data[0] >> 2) % 8;  // 0 to 7

    std::vector<unsigned char> input(BinaryArchive::kHeaderSize + size - 1);
    const std::uint32_t header[2] = {BinaryArchive::kHeaderFirst, BinaryArchive::kHeaderSecond};
    std::memcpy(input.data(), header, sizeof header);
    std::memcpy(input.data() + BinaryArchive::kHeaderSize, data + 1, size - 1);

    auto first = MakeObject(kind);
    try {
        BinaryArchive archive(static_cast<const void*>(input.data()), input.size(), ArchiveDirection::Load);
        if (first->StreamData(&archive, version) != 0) __builtin_trap();
    } catch (const ArchiveException&) {
        return 0;  // a stream cut short is refused by type, which is what callers rely on
    }

    const std::vector<unsigned char> stored = Store(*first, version, input.size() * 2 + 4096);
    auto second = MakeObject(kind);
    BinaryArchive again(static_cast<const void*>(stored.data()), stored.size(), ArchiveDirection::Load);
    if (second->StreamData(&again, version) != 0) __builtin_trap();
    if (Store(*second, version, stored.size()) != stored) __builtin_trap();
    return 0;
}
