// The one error that crosses the platform's borders, its published numbers, and the trap that
// collects errors where a procedure goes on and reports them at its end.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace platform {

/// Published error numbers, as signed 32-bit values (the listing shows their unsigned form).
enum ErrorNumber : std::uint32_t {
    kUnspecified = 0x80004005,
    kNotImplemented = 0x80004001,
    kElementNotFound = 0x8002000B,  // an index beyond the last word
    kFileNotFound = 0x80070002,
    kPathNotFound = 0x80070003,
    kAccessDenied = 0x80070005,
    kInvalidData = 0x8007000D,
    kFileExists = 0x80070050,
    kDiskFull = 0x80070070,
    kInvalidArgument = 0x80070057,
    kBusy = 0x800700AA,
    kDeviceNotConnected = 0x8007048F,
    kEndMarkPastEnd = 0xC00D1B59,
};

/// An error as values.
struct ErrorReport {
    std::uint32_t number = 0;  // 0 = the error has none
    std::string description;
};

/// A failed operation. `description` is UTF-8, names what failed (file, option, device) and says
/// what to do; it carries no number and no line end.
class Error : public std::exception {
  public:
    Error(std::uint32_t number, std::string description)
        : number_(static_cast<std::int32_t>(number)), description_(std::move(description)) {}

    std::int32_t number() const { return number_; }
    std::uint32_t unsigned_number() const { return static_cast<std::uint32_t>(number_); }
    const std::string& description() const { return description_; }
    ErrorReport report() const { return {unsigned_number(), description_}; }
    const char* what() const noexcept override { return description_.c_str(); }

  private:
    std::int32_t number_;
    std::string description_;
};

/// Runs steps one by one and keeps the first error (the cause); later steps still run.
/// Anything that is not an Error passes through.
class ErrorTrap {
  public:
    template <typename Step>
    void operator()(Step&& step) {
        try {
            std::forward<Step>(step)();
        } catch (const Error& error) {
            if (has_error_) return;
            has_error_ = true;
            number_ = error.number();
            description_ = error.description();
        }
    }

    bool HasError() const { return has_error_; }
    std::int32_t Number() const { return number_; }  // 0 without an error
    std::uint32_t UnsignedNumber() const { return static_cast<std::uint32_t>(number_); }
    const std::string& Description() const { return description_; }
    ErrorReport Report() const { return {UnsignedNumber(), description_}; }
    void Clear() { *this = ErrorTrap(); }

  private:
    bool has_error_ = false;
    std::int32_t number_ = 0;
    std::string description_;
};

}  // namespace platform
