// Base of every object that an access string can reach and that streams itself through BinaryArchive.
#pragma once

#include <cstdint>
#include <string>

namespace rivulet {

class BinaryArchive;
class CExtDataServerTag;

class CExtDataServerObject {
  public:
    CExtDataServerObject() = default;
    CExtDataServerObject(const CExtDataServerObject&) = default;
    CExtDataServerObject& operator=(const CExtDataServerObject&) = default;
    virtual ~CExtDataServerObject() = default;

    virtual void ReservedNotify() {}
    virtual bool ReservedQuery() { return true; }
    // Stores the object, or loads what a stream of `version` holds, according to the archive's direction.
    // 0 on success, 1 for a null archive; a stream cut short raises ArchiveException from the archive.
    virtual std::int32_t StreamData(BinaryArchive* archive, std::int32_t version) {
        (void)archive;
        (void)version;
        return 0;
    }
    virtual std::string GetDataServerName() const { return {}; }
    // Non-zero when the string at the cursor belongs to this object, whether or not an error text was then
    // set; 0 when it does not.
    virtual std::int32_t ProcessAccessString(CExtDataServerTag& tag, std::uint32_t unused = 0) = 0;
};

}  // namespace rivulet
