#include <set>
#include <tuple>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include "engine/plan/codec_names.h"
#include "engine/plan/written_audio.h"
#include "platform/text.h"
#include "support/error_of.h"

namespace engine {
namespace {

using platform::VbrMode;
using Kind = platform::CodecMaker::Kind;

constexpr VbrMode kModes[] = {VbrMode::Constant, VbrMode::Peak, VbrMode::Quality, VbrMode::BitRate};

const AudioCodecRow& Standard() { return platform::kAudioCodecs[0]; }
const AudioCodecRow& Professional() { return platform::kAudioCodecs[1]; }
const AudioCodecRow& Lossless() { return platform::kAudioCodecs[2]; }
const AudioCodecRow& Voice() { return platform::kAudioCodecs[3]; }
const AudioCodecRow& Pcm() { return platform::kAudioCodecs[4]; }

// Calls `use(row, mode, format)` for all listed formats.
template <typename Use>
void ForEachListedFormat(const Use& use) {
    for (const AudioCodecRow& row : platform::kAudioCodecs)
        for (const VbrMode mode : kModes)
            for (const AudioFormat& format : AudioFormats(row, mode)) use(row, mode, format);
}

// The listing writes whole kilobits; no two rows of a codec may look the same in it.
TEST(AudioFormats, ListingHasNoTwoEqualLines) {
    std::set<std::tuple<int, VbrMode, double, int, int, int>> seen;
    ForEachListedFormat([&](const AudioCodecRow& row, VbrMode mode, const AudioFormat& format) {
        const double column = mode == VbrMode::Quality
                                  ? format.value
                                  : platform::RoundHalfToEven(format.value / 1000.0);
        EXPECT_TRUE(seen.emplace(row.tag, mode, column, format.sampling_rate, format.channels,
                                 format.bits_per_sample)
                        .second)
            << row.name << " " << FormatArgument(row, mode, format);
    });
}

struct SnapCase {
    const char* why;
    const AudioCodecRow& row;
    VbrMode mode;
    AudioFormat typed;
    std::int32_t value;  // found; -1 = nothing
};

TEST(AudioFormats, FindsTheFormatThatIsMeant) {
    const SnapCase cases[] = {
        {"an exact rate", Standard(), VbrMode::Constant, {20008, 22050, 1, 16}, 20008},
        {"another beside the listed one",
         Standard(),
         VbrMode::Constant,
         {64016, 44100, 2, 16},
         64016},
        // typed kilobits
        {"10 is 10168", Standard(), VbrMode::Constant, {10000, 11025, 1, 16}, 10168},
        {"20 is 20008", Standard(), VbrMode::Constant, {20000, 22050, 2, 16}, 20008},
        {"64 is the listed one", Standard(), VbrMode::Constant, {64000, 44100, 2, 16}, 64040},
        {"128 is the listed one", Standard(), VbrMode::Constant, {128000, 44100, 2, 16}, 128040},
        {"half a kilobit to even", Standard(), VbrMode::Constant, {64500, 44100, 2, 16}, 64040},
        {"above it is another", Standard(), VbrMode::Constant, {64501, 44100, 2, 16}, -1},
        {"other channels", Standard(), VbrMode::Constant, {20000, 22050, 6, 16}, -1},
        {"other bits", Standard(), VbrMode::Constant, {64000, 44100, 2, 24}, -1},
        // defaults of custom profiles
        {"Q75_44_2", Standard(), VbrMode::Quality, {75, 44100, 2, 16}, 75},
        {"quality does not round", Standard(), VbrMode::Quality, {76, 44100, 2, 16}, -1},
        {"64_44_2 peak", Standard(), VbrMode::Peak, {64000, 44100, 2, 16}, 64000},
        {"64_44_2 bit rate", Standard(), VbrMode::BitRate, {64000, 44100, 2, 16}, 64000},
        {"128_44_2_24", Professional(), VbrMode::Constant, {128000, 44100, 2, 24}, 128000},
        {"128_44_2_24 bit rate", Professional(), VbrMode::BitRate, {128000, 44100, 2, 24}, 128000},
        {"Q75_44_2_24", Professional(), VbrMode::Quality, {75, 44100, 2, 24}, 75},
        {"Q100_44_2_16", Lossless(), VbrMode::Quality, {100, 44100, 2, 16}, 100},
        {"lossless has no rate", Lossless(), VbrMode::Constant, {128000, 44100, 2, 16}, -1},
        {"12_16_1", Voice(), VbrMode::Constant, {12000, 16000, 1, 16}, 12000},
        {"705_22_2", Pcm(), VbrMode::Constant, {705600, 22050, 2, 16}, 705600},
        {"1411_44_2", Pcm(), VbrMode::Constant, {1411200, 44100, 2, 16}, 1411200},
        {"48 kHz for who sets it", Pcm(), VbrMode::Constant, {1536000, 48000, 2, 16}, 1536000},
        {"64_44_2 of voice", Voice(), VbrMode::Constant, {64000, 44100, 2, 16}, -1},
        {"PCM has no quality", Pcm(), VbrMode::Quality, {75, 44100, 2, 16}, -1},
    };
    for (const SnapCase& c : cases) {
        const auto found = FindAudioFormat(c.row, c.mode, c.typed);
        EXPECT_EQ(found ? found->value : -1, c.value) << c.why;
    }
}

struct RefusalCase {
    const AudioCodecRow& row;
    VbrMode mode;
    AudioFormat wanted;
    std::vector<std::string> words;
};

TEST(AudioFormats, RefusalSaysWhatTheCodecOffers) {
    const RefusalCase cases[] = {
        {Voice(), VbrMode::Constant, {64000, 44100, 2, 16}, {"Voice", "64 kbps", "12_16_1"}},
        {Pcm(), VbrMode::Constant, {64000, 44100, 2, 16}, {"PCM", "stereo", "1411_44_2"}},
        {Standard(), VbrMode::Constant, {440000, 44100, 2, 16}, {"64_44_2", "320_44_2"}},
        {Lossless(), VbrMode::Constant, {64000, 44100, 2, 16}, {"Lossless", "-a_mode 2"}},
        {Pcm(), VbrMode::Peak, {64000, 44100, 2, 16}, {"PCM", "peak rate", "-a_mode 1"}},
        {Standard(), VbrMode::Quality, {80, 44100, 2, 16}, {"quality 80", "Q75_44_2"}},
    };
    for (const RefusalCase& c : cases) {
        SCOPED_TRACE(c.row.name);
        EXPECT_EQ(test_support::ErrorNumber([&] { RequireAudioFormat(c.row, c.mode, c.wanted); },
                                            c.words),
                  platform::kInvalidArgument);
    }
}

struct WrittenCase {
    const char* why;
    const AudioCodecRow& row;
    VbrMode mode;
    AudioFormat format;
    WrittenAudio written;
    const char* description;
};

TEST(WrittenAudio, HasARateInEveryMode) {
    // clang-format off
    const WrittenCase cases[] = {
        {"as asked", Standard(), VbrMode::Constant, {64040, 44100, 2, 16},
         {{Kind::Wma}, 0x0161, {64040, 44100, 2, 16}}, "64 kbps, 44 kHz, stereo CBR"},
        {"low", Standard(), VbrMode::Constant, {20008, 22050, 1, 16},
         {{Kind::Wma}, 0x0161, {20008, 22050, 1, 16}}, "20 kbps, 22 kHz, mono CBR"},
        {"quality", Standard(), VbrMode::Quality, {75, 44100, 2, 16},
         {{Kind::Wma}, 0x0161, {128000, 44100, 2, 16}}, "quality 75, 44 kHz, stereo VBR"},
        {"variable", Standard(), VbrMode::Peak, {64000, 44100, 2, 16},
         {{Kind::Wma}, 0x0161, {64000, 44100, 2, 16}}, "64 kbps, 44 kHz, stereo VBR"},
        {"more channels, rate and depth", Professional(), VbrMode::Constant, {768000, 96000, 8, 24},
         {{Kind::Professional}, 0x0162, {768000, 96000, 8, 24}},
         "768 kbps, 96 kHz, 8 channels, 24 bit CBR"},
        {"quality of more channels", Professional(), VbrMode::Quality, {50, 48000, 6, 16},
         {{Kind::Professional}, 0x0162, {288000, 48000, 6, 16}},
         "quality 50, 48 kHz, 6 channels VBR"},
        {"voice", Voice(), VbrMode::Constant, {12000, 16000, 1, 16},
         {{Kind::Voice}, 0x000A, {12000, 16000, 1, 16}}, "12 kbps, 16 kHz, mono CBR"},
        {"lossless", Lossless(), VbrMode::Quality, {100, 44100, 2, 24},
         {{Kind::Lossless}, 0x0163, {100, 44100, 2, 24}},
         "quality 100, 44 kHz, stereo, 24 bit VBR"},
        {"PCM", Pcm(), VbrMode::Constant, {705600, 22050, 2, 16}, {{Kind::Pcm}, 1, {705600, 22050, 2, 16}}, "706 kbps, 22 kHz, stereo"},
    };
    // clang-format on
    for (const WrittenCase& c : cases) {
        const WrittenAudio written = WrittenFor(c.row, c.mode, c.format);
        EXPECT_EQ(written.maker.kind, c.written.maker.kind) << c.why;
        EXPECT_EQ(written.tag, c.written.tag) << c.why;
        EXPECT_EQ(written.format, c.written.format) << c.why;
        EXPECT_EQ(AudioDescription(c.row, c.mode, c.format), c.description) << c.why;
    }
}

TEST(CodecTable, RowsHoldTogether) {
    for (const AudioCodecRow& row : platform::kAudioCodecs)
        for (const VbrMode mode : kModes)
            EXPECT_EQ(row.modes.Has(mode), !AudioFormats(row, mode).empty())
                << row.short_name << " " << ModeName(mode);
    for (const platform::VideoCodecRow& row : platform::kVideoCodecs)
        EXPECT_TRUE(row.maker.kind != Kind::Library ||
                    avcodec_find_encoder_by_name(row.maker.name.data()) != nullptr)
            << row.short_name;
}

TEST(CodecNames, SayWhichModeIsNeeded) {
    const auto audio = [](const AudioCodecRow& row) {
        return AudioDisplayName(row, VbrMode::Constant);
    };
    EXPECT_EQ(audio(Standard()), "Windows Media Audio 9");
    EXPECT_EQ(audio(Professional()), "Windows Media Audio 9 Professional");
    EXPECT_EQ(audio(Lossless()), "Windows Media Audio 9 Lossless (needs -a_mode 2)");
    EXPECT_EQ(AudioDisplayName(Lossless(), VbrMode::Quality), "Windows Media Audio 9 Lossless");
}

}  // namespace
}  // namespace engine
