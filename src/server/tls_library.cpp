#include "server/tls_library.h"

#include <dlfcn.h>

#include <mutex>
#include <string>

#include "common/error.h"

namespace ent {

namespace {

// The library OpenSSL 3's headers describe; libcrypto comes with it.
constexpr const char* kLibrary = "libssl.so.3";

template <class Function>
void Find(void* library, const char* name, Function& function, std::string& missing) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  if (!function) missing += std::string(missing.empty() ? "" : ", ") + name;
}

}  // namespace

const TlsLibrary& OpenSsl() {
  static TlsLibrary library;
  static std::string failure;
  static std::once_flag loaded;
  std::call_once(loaded, [] {
    // Never closed: the process keeps it, as if it were linked.
    void* handle = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
      const char* why = dlerror();
      failure = std::string(kLibrary) + " cannot be loaded (" + (why ? why : "?") + ")";
      return;
    }
    std::string missing;
    TlsLibrary& l = library;
    Find(handle, "TLS_client_method", l.TLS_client_method, missing);
    Find(handle, "SSL_CTX_new", l.SSL_CTX_new, missing);
    Find(handle, "SSL_CTX_free", l.SSL_CTX_free, missing);
    Find(handle, "SSL_CTX_ctrl", l.SSL_CTX_ctrl, missing);
    Find(handle, "SSL_CTX_set_default_verify_paths", l.SSL_CTX_set_default_verify_paths, missing);
    Find(handle, "SSL_CTX_set_verify", l.SSL_CTX_set_verify, missing);
    Find(handle, "SSL_CTX_get0_param", l.SSL_CTX_get0_param, missing);
    Find(handle, "X509_VERIFY_PARAM_set1_host", l.X509_VERIFY_PARAM_set1_host, missing);
    Find(handle, "X509_VERIFY_PARAM_set1_ip_asc", l.X509_VERIFY_PARAM_set1_ip_asc, missing);
    Find(handle, "SSL_new", l.SSL_new, missing);
    Find(handle, "SSL_free", l.SSL_free, missing);
    Find(handle, "SSL_set_fd", l.SSL_set_fd, missing);
    Find(handle, "SSL_ctrl", l.SSL_ctrl, missing);
    Find(handle, "SSL_connect", l.SSL_connect, missing);
    Find(handle, "SSL_read", l.SSL_read, missing);
    Find(handle, "SSL_write", l.SSL_write, missing);
    Find(handle, "SSL_shutdown", l.SSL_shutdown, missing);
    Find(handle, "SSL_get_error", l.SSL_get_error, missing);
    Find(handle, "SSL_get_verify_result", l.SSL_get_verify_result, missing);
    Find(handle, "ERR_clear_error", l.ERR_clear_error, missing);
    Find(handle, "X509_verify_cert_error_string", l.X509_verify_cert_error_string, missing);
    if (!missing.empty()) failure = std::string(kLibrary) + " lacks " + missing;
  });
  if (!failure.empty()) throw Error(err::kServiceFailure, "TLS cannot be set up: " + failure + ".");
  return library;
}

}  // namespace ent
