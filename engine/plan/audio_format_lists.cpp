#include "engine/plan/audio_format_lists.h"

#include <array>
#include <cstddef>

namespace engine {

namespace {

// Formats that differ in their rate only. A zero ends the values.
struct FormatGroup {
    std::int32_t sampling_rate;
    std::int32_t channels;
    std::int32_t bits;
    std::array<std::int32_t, 10> values;
};

// clang-format off

// The rates with odd ends are whole numbers of bytes per second that predefined profiles carry.
constexpr FormatGroup kStandard[] = {
    // Hz   ch bits  bits per second
    { 8000, 1, 16, {5000, 6000, 8000, 12000}},
    { 8000, 2, 16, {12000}},
    {11025, 1, 16, {8000, 10168}},
    {16000, 1, 16, {10000, 12000, 16000, 20000}},
    {16000, 2, 16, {16000, 20000, 32000}},
    {22050, 1, 16, {16000, 20008, 32000}},
    {22050, 2, 16, {20008, 22000, 32000, 48000}},
    {32000, 1, 16, {20000, 32000, 48000}},
    {32000, 2, 16, {32000, 40000, 48000, 64000}},
    {44100, 1, 16, {32000, 48000, 64000, 96000}},
    {44100, 2, 16, {32000, 48000, 64040, 80000, 96024, 128040, 160000, 192000, 256000, 320000}},
    {48000, 2, 16, {64000, 96000, 128000, 160000, 192000, 256000, 320000}},
};
constexpr FormatGroup kStandardUnlisted[] = {
    // Hz   ch bits  bits per second
    {32000, 2, 16, {48024}},
    {44100, 2, 16, {64016, 128016}},
};
constexpr FormatGroup kStandardVariable[] = {
    // Hz   ch bits  bits per second
    {22050, 2, 16, {32000, 48000}},
    {32000, 2, 16, {32000, 40000, 48000, 64000}},
    {44100, 2, 16, {48000, 64000, 80000, 96000, 128000, 160000, 192000, 256000, 320000}},
    {48000, 2, 16, {64000, 96000, 128000, 160000, 192000, 256000, 320000}},
};
constexpr FormatGroup kStandardQuality[] = {
    // Hz   ch bits  quality
    {44100, 2, 16, {10, 25, 50, 75, 90, 98}},
    {48000, 2, 16, {10, 25, 50, 75, 90, 98}},
};

constexpr FormatGroup kProfessional[] = {
    // Hz   ch bits  bits per second
    {44100, 2, 16, {48000, 64000, 80000, 96000, 128000, 160000, 192000, 256000, 320000}},
    {44100, 2, 24, {128000, 160000, 192000, 256000, 320000, 384000}},
    {48000, 2, 16, {64000, 96000, 128000, 160000, 192000, 256000, 320000}},
    {48000, 2, 20, {128000, 192000, 256000}},
    {48000, 2, 24, {128000, 160000, 192000, 256000, 320000, 384000, 440000}},
    {88200, 2, 24, {192000, 256000, 384000, 440000}},
    {96000, 2, 24, {192000, 256000, 384000, 440000, 640000}},
    {44100, 6, 16, {128000, 192000, 256000, 384000}},
    {44100, 6, 24, {192000, 256000, 384000, 440000}},
    {48000, 6, 16, {128000, 192000, 256000, 384000, 440000}},
    {48000, 6, 24, {192000, 256000, 384000, 440000, 640000}},
    {88200, 6, 24, {384000, 440000, 640000}},
    {96000, 6, 24, {384000, 440000, 640000, 768000}},
    {48000, 8, 24, {384000, 440000, 640000, 768000}},
    {96000, 8, 24, {640000, 768000}},
};
constexpr FormatGroup kProfessionalQuality[] = {
    // Hz   ch bits  quality
    {44100, 2, 16, {10, 25, 50, 75, 90, 98}},
    {44100, 2, 24, {10, 25, 50, 75, 90, 98}},
    {48000, 2, 16, {10, 25, 50, 75, 90, 98}},
    {48000, 2, 20, {50, 75, 90}},
    {48000, 2, 24, {10, 25, 50, 75, 90, 98}},
    {88200, 2, 24, {10, 25, 50, 75, 90, 98}},
    {96000, 2, 24, {10, 25, 50, 75, 90, 98}},
    {44100, 6, 16, {10, 25, 50, 75, 90, 98}},
    {44100, 6, 24, {10, 25, 50, 75, 90, 98}},
    {48000, 6, 16, {10, 25, 50, 75, 90, 98}},
    {48000, 6, 24, {10, 25, 50, 75, 90, 98}},
    {96000, 6, 24, {10, 25, 50, 75, 90, 98}},
    {48000, 8, 24, {10, 25, 50, 75, 90, 98}},
    {96000, 8, 24, {10, 25, 50, 75, 90, 98}},
};

constexpr FormatGroup kLosslessQuality[] = {
    // Hz   ch bits  quality
    {44100, 2, 16, {100}},
    {44100, 2, 24, {100}},
    {48000, 2, 16, {100}},
    {48000, 2, 24, {100}},
    {88200, 2, 24, {100}},
    {96000, 2, 24, {100}},
    {44100, 6, 16, {100}},
    {44100, 6, 24, {100}},
    {48000, 6, 16, {100}},
    {48000, 6, 24, {100}},
    {96000, 6, 24, {100}},
};

constexpr FormatGroup kVoice[] = {
    // Hz   ch bits  bits per second
    { 8000, 1, 16, {4000, 5000, 6000, 8000}},
    {11025, 1, 16, {8000, 10000}},
    {16000, 1, 16, {12000, 16000}},
    {22050, 1, 16, {16000, 20000}},
};

// Rate = Hz x channels x bits.
constexpr FormatGroup kPcm[] = {
    // Hz   ch bits  bits per second
    { 8000, 1, 16, {128000}},
    { 8000, 2, 16, {256000}},
    {11025, 2, 16, {352800}},
    {16000, 1, 16, {256000}},
    {22050, 1, 16, {352800}},
    {22050, 2, 16, {705600}},
    {44100, 1, 16, {705600}},
    {44100, 2, 16, {1411200}},
    {48000, 1, 16, {768000}},
};
constexpr FormatGroup kPcmUnlisted[] = {  // an argument cannot have these rates
    // Hz   ch bits  bits per second
    {11025, 1, 16, {176400}},
    {16000, 2, 16, {512000}},
    {32000, 1, 16, {512000}},
    {32000, 2, 16, {1024000}},
    {48000, 2, 16, {1536000}},
};

// clang-format on

template <const auto& groups>
constexpr auto Expand() {
    constexpr std::size_t count = [] {
        std::size_t values = 0;
        for (const FormatGroup& group : groups)
            for (const std::int32_t value : group.values) values += value != 0 ? 1 : 0;
        return values;
    }();
    std::array<AudioFormat, count> formats{};
    std::size_t place = 0;
    for (const FormatGroup& group : groups) {
        for (const std::int32_t value : group.values) {
            if (value == 0) break;
            formats[place++] = {value, group.sampling_rate, group.channels, group.bits};
        }
    }
    return formats;
}

template <const auto& groups>
constexpr auto kExpanded = Expand<groups>();

struct ListsRow {
    std::uint16_t tag;
    platform::VbrMode mode;
    AudioFormatLists lists;
};

using platform::VbrMode;

// clang-format off
constexpr ListsRow kLists[] = {
    // tag    mode               listed                            unlisted
    {0x0161, VbrMode::Constant, {kExpanded<kStandard>,             kExpanded<kStandardUnlisted>}},
    {0x0161, VbrMode::Quality,  {kExpanded<kStandardQuality>,      {}}},
    {0x0161, VbrMode::Peak,     {kExpanded<kStandardVariable>,     {}}},
    {0x0161, VbrMode::BitRate,  {kExpanded<kStandardVariable>,     {}}},
    {0x0162, VbrMode::Constant, {kExpanded<kProfessional>,         {}}},
    {0x0162, VbrMode::Quality,  {kExpanded<kProfessionalQuality>,  {}}},
    {0x0162, VbrMode::Peak,     {kExpanded<kProfessional>,         {}}},
    {0x0162, VbrMode::BitRate,  {kExpanded<kProfessional>,         {}}},
    {0x0163, VbrMode::Quality,  {kExpanded<kLosslessQuality>,      {}}},
    {0x000A, VbrMode::Constant, {kExpanded<kVoice>,                {}}},
    {0x0000, VbrMode::Constant, {kExpanded<kPcm>,                  kExpanded<kPcmUnlisted>}},
};
// clang-format on

}  // namespace

AudioFormatLists AudioFormatsOf(std::uint16_t tag, VbrMode mode) {
    for (const ListsRow& row : kLists)
        if (row.tag == tag && row.mode == mode) return row.lists;
    return {};
}

}  // namespace engine
