// OpenSSL for the HTTP client, loaded when the first https exchange needs it: most processes post
// over http, and loading and relocating libssl and libcrypto costs every process half a millisecond
// at start. The functions keep OpenSSL's names and signatures (openssl/ssl.h declares them).
#pragma once

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

namespace ent {

struct TlsLibrary {
  decltype(&::TLS_client_method) TLS_client_method;
  decltype(&::SSL_CTX_new) SSL_CTX_new;
  decltype(&::SSL_CTX_free) SSL_CTX_free;
  decltype(&::SSL_CTX_ctrl) SSL_CTX_ctrl;
  decltype(&::SSL_CTX_set_default_verify_paths) SSL_CTX_set_default_verify_paths;
  decltype(&::SSL_CTX_set_verify) SSL_CTX_set_verify;
  decltype(&::SSL_CTX_get0_param) SSL_CTX_get0_param;
  decltype(&::X509_VERIFY_PARAM_set1_host) X509_VERIFY_PARAM_set1_host;
  decltype(&::X509_VERIFY_PARAM_set1_ip_asc) X509_VERIFY_PARAM_set1_ip_asc;
  decltype(&::SSL_new) SSL_new;
  decltype(&::SSL_free) SSL_free;
  decltype(&::SSL_set_fd) SSL_set_fd;
  decltype(&::SSL_ctrl) SSL_ctrl;
  decltype(&::SSL_connect) SSL_connect;
  decltype(&::SSL_read) SSL_read;
  decltype(&::SSL_write) SSL_write;
  decltype(&::SSL_shutdown) SSL_shutdown;
  decltype(&::SSL_get_error) SSL_get_error;
  decltype(&::SSL_get_verify_result) SSL_get_verify_result;
  decltype(&::ERR_clear_error) ERR_clear_error;
  decltype(&::X509_verify_cert_error_string) X509_verify_cert_error_string;
};

// OpenSSL, loaded on the first call; raises ent::Error ("TLS cannot be set up: ...") when it cannot be.
const TlsLibrary& OpenSsl();

}  // namespace ent
