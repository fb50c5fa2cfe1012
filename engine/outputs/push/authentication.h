// Who pushes: HTTP's Digest (RFC 2617, MD5 with and without qop=auth) and Basic schemes.
#pragma once

#include <string>
#include <utility>

#include "platform/credentials.h"

namespace engine::push {

/// Whether the first challenge can be met, and better than the second one, which may be "".
bool IsBetterChallenge(const std::string& challenge, const std::string& than);

/// Answers one challenge, request after request. One thread.
class Authentication {
  public:
    explicit Authentication(platform::Credentials credentials)
        : credentials_(std::move(credentials)) {}

    bool HasCredentials() const { return !credentials_.user.empty(); }
    /// Requests are not signed until there is another challenge.
    void Use(platform::Credentials credentials) { *this = Authentication(std::move(credentials)); }
    /// From now on requests are signed for this challenge.
    void Accept(const std::string& challenge);
    /// The value of a POST's Authorization field; "" before a challenge.
    /// @param client_nonce  a text that no one can foresee
    std::string FieldFor(const std::string& path, const std::string& client_nonce);

  private:
    platform::Credentials credentials_;
    std::string challenge_;
    unsigned count_ = 0;  // of requests with its nonce
};

}  // namespace engine::push
