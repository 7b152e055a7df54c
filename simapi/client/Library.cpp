// Library-wide operations of the client: manager and job lifetime, and the crypted password.
#include <openssl/evp.h>

#include <cstring>
#include <new>
#include <string>

#include "client/Connection.h"
#include "client/Job.h"
#include "client/Manager.h"
#include "tNavigator_API_RMA.h"

namespace {

// Fixed salt of the crypted password; a dispatcher's users file holds the same token for each user.
constexpr char kPasswordSalt[] = "rivulet-tnavapi-password-v1:";
// Marks a token, so that a plain password stored by mistake is not mistaken for one.
constexpr char kTokenPrefix[] = "sha256:";

}  // namespace

void tNavigator_API_RMA::init() {
    // gRPC initialises itself on the first channel; nothing is kept between calls.
}

tNavigator_API_RMA_error_t tNavigator_API_RMA::tnav_create_manager(tNavigator_API_RMA_manager_t** manager) {
    if (manager == nullptr)
        return tnavclient::invalidArgument("tnav_create_manager", "the manager output pointer is null");
    *manager = new (std::nothrow) tnavclient::Manager();
    if (*manager == nullptr)
        return tnavclient::makeError(tnavclient::kInvalidArgument, "tnav_create_manager: out of memory");
    return {};
}

void tNavigator_API_RMA::tnav_free_manager(tNavigator_API_RMA_manager_t* manager) {
    delete manager;
}

void tNavigator_API_RMA::tnav_free_job(tNavigator_API_RMA_job_t* job) {
    delete job;
}

tNavigator_API_RMA_error_t tNavigator_API_RMA::encrypt_password(const tNavigator_API_RMA_string& password,
                                                                tNavigator_API_RMA_string& crypted) {
    std::string input = std::string(kPasswordSalt) + password.c_str();
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    const bool ok = EVP_Digest(input.data(), input.size(), digest, &length, EVP_sha256(), nullptr) == 1;
    // The salted copy of the plain text does not outlive this call.
    std::memset(input.data(), 0, input.size());
    if (!ok)
        return tnavclient::makeError(tnavclient::kInvalidArgument,
                                     "encrypt_password: SHA-256 is not available");
    static constexpr char kHex[] = "0123456789abcdef";
    std::string token = kTokenPrefix;
    for (unsigned int i = 0; i < length; ++i) {
        token += kHex[digest[i] >> 4];
        token += kHex[digest[i] & 0x0f];
    }
    crypted = token.c_str();
    return {};
}
