// What the fakes of the encoder object model are made of: values as texts for the shared log, and
// properties that remember what is written to them and note it there.
#pragma once

#include <string>
#include <type_traits>

#include "platform/encoder.h"
#include "support/call_log.h"

namespace test_support {

inline std::string ValueText(const std::string& value) { return value; }
inline std::string ValueText(bool value) { return value ? "true" : "false"; }
inline std::string ValueText(std::int32_t value) { return std::to_string(value); }
inline std::string ValueText(std::uint32_t value) { return std::to_string(value); }
inline std::string ValueText(platform::VbrMode value) {
    return std::to_string(static_cast<int>(value));
}
inline std::string TypeName(platform::SourceType type) {
    return type == platform::SourceType::Audio   ? "audio"
           : type == platform::SourceType::Video ? "video"
                                                 : std::to_string(static_cast<int>(type));
}

// A property with its log line: FAKE_PROPERTY for one value, FAKE_STREAM_PROPERTY for stream 0's.
#define FAKE_PROPERTY(Type, Name, Prefix)                               \
    std::decay_t<Type> Name() const override { return value_##Name; }   \
    void Set##Name(Type value) override {                               \
        log->Call(std::string(Prefix) + #Name, "=" + ValueText(value)); \
        value_##Name = value;                                           \
    }                                                                   \
    std::decay_t<Type> value_##Name {}
#define FAKE_STREAM_PROPERTY(Type, Name)                                          \
    Type Name(int) const override { return value_##Name; }                        \
    void Set##Name(int stream, Type value) override {                             \
        log->Call(#Name, "(" + std::to_string(stream) + ")=" + ValueText(value)); \
        value_##Name = value;                                                     \
    }                                                                             \
    Type value_##Name {}

}  // namespace test_support
