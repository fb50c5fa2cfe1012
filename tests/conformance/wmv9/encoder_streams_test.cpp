// Streams of the encoder itself.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "codecs/wmv9/sequence_header.h"
#include "conformance/wmv9/encoder_calls.h"
#include "conformance/wmv9/stream_check.h"
#include "support/row_name.h"

namespace wmv9_conformance {

using namespace codecs::wmv9;

namespace {

const std::vector<double> kMixedQuantisers = {8, 2.5, 14, 31, 1, 5.5, 70, 8.5, 3};

// 1, 1.5, ... 8, 8.5, 9, 10, ... 31, and some beyond.
std::vector<double> AllQuantisers() {
    std::vector<double> all;
    for (double quantiser = 1; quantiser <= 31; quantiser += quantiser < 9 ? 0.5 : 1)
        all.push_back(quantiser);
    all.insert(all.end(), {32, 60, kCoarsestAsked});
    return all;
}

struct SizeCase {
    const char* why;
    int width;
    int height;
    int pictures;
    int preset;
    int b_pictures;
};

// clang-format off
constexpr SizeCase kSizes[] = {
    // why                                width height pictures preset b_pictures
    {"no smaller one",                        2,    2,   9,      60,    2},
    {"mostly repeated samples",              18,    2,   9,     100,    1},
    {"one macroblock",                       16,   16,   9,      60,    3},
    {"a sliver beyond a macroblock",         34,   18,   9,      60,    2},
    {"one column",                           14,  176,   9,      60,    1},
    {"one row",                             178,   16,   9,      60,    1},
    {"cropped on both sides",                98,   50,   9,      80,    2},
    {"whole macroblocks",                   176,  144,   9,      60,    2},
    {"vectors of range 1",                  100,  402,   4,      60,    1},
    {"vectors of range 2, across",         1282,   20,   4,      60,    1},
    {"vectors of range 2, down",             50,  720,   4,      60,    1},
    {"a last row of half a macroblock",    1920, 1080,   2,      60,    0},
};
// clang-format on

class EncoderStreamsOf : public testing::TestWithParam<SizeCase> {};
INSTANTIATE_TEST_SUITE_P(Sizes, EncoderStreamsOf, testing::ValuesIn(kSizes),
                         test_support::NameOfRow());

TEST_P(EncoderStreamsOf, Decode) {
    const SizeCase& row = GetParam();
    const EncoderSettings settings{.width = row.width,
                                   .height = row.height,
                                   .preset = row.preset,
                                   .b_pictures = row.b_pictures};
    const Calls calls = Gops(row.pictures, row.b_pictures, kMixedQuantisers);
    EXPECT_EQ(EncodeAll(settings, {}, calls).fault, "");
}

class EncoderStreamsAt : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Presets, EncoderStreamsAt, testing::Range(0, 101, 20));

TEST_P(EncoderStreamsAt, Decode) {
    for (int b_pictures = 0; b_pictures <= 4; ++b_pictures) {
        const bool simple = b_pictures == 4;
        EncoderSettings settings{.width = 50, .height = 34, .preset = GetParam()};
        settings.profile = simple ? Profile::Simple : Profile::Main;
        settings.b_pictures = simple ? 0 : b_pictures;
        settings.adaptive = b_pictures % 2 == 1;
        for (int content = 0; content < kContents; ++content) {
            SCOPED_TRACE(fmt::format("{} B pictures{}, content {}", settings.b_pictures,
                                     simple ? ", Simple" : "", content));
            const Calls calls = Gops(9, settings.b_pictures, kMixedQuantisers);
            EXPECT_EQ(EncodeAll(settings, {static_cast<Content>(content)}, calls).fault, "");
        }
    }
}

std::vector<PlanarPicture> Moving(Content content, const EncoderSettings& settings, int count) {
    std::vector<PlanarPicture> pictures;
    for (int i = 0; i < count; ++i)
        pictures.push_back(MakePicture(content, settings.width, settings.height, i, 1));
    return pictures;
}

// With the B pictures that the encoder chooses, which are counted.
int EncodeAhead(Encoder& encoder, const std::vector<PlanarPicture>& pictures,
                const std::function<void(std::size_t place, const CodedPicture&)>& take) {
    std::vector<PictureView> all;
    for (const PlanarPicture& picture : pictures) all.push_back(picture.View());
    const auto code = [&](std::size_t place, PictureRequest request) {
        request.number = static_cast<int>(place);
        request.beside = all;
        take(place, encoder.Encode(all[place], request));
    };
    int chosen = 0;
    for (const PictureView& view : all) encoder.LookAhead(view);
    code(0, {.kind = PictureKind::kI});
    for (std::size_t next = 1; next < all.size();) {
        const std::size_t tried = std::min<std::size_t>(all.size() - next, kTriedPictures);
        const int count = encoder.ChooseBPictures({&all[next], tried}, static_cast<int>(next));
        const std::size_t anchor = next + static_cast<std::size_t>(count);
        code(anchor, {.kind = PictureKind::kP, .may_be_i = count == 0});
        for (int i = 0; i < count; ++i)
            code(next++, {.kind = PictureKind::kB, .b_number = i + 1, .b_pictures = count});
        next = anchor + 1;
        chosen += count;
    }
    return chosen;
}

// What the encoder tries while it chooses leaves no trace in the stream.
TEST_P(EncoderStreamsAt, DecodeWithTheBPicturesThatTheEncoderChooses) {
    constexpr int kPictures = 24;
    const EncoderSettings settings{
        .width = 64, .height = 48, .preset = GetParam(), .b_pictures = 2, .adaptive = true};
    int chosen = 0;
    for (const Content content : {Content::Texture, Content::Noise, Content::Flat, Content::Fade}) {
        Encoder encoder(settings);
        StreamCheck check({settings.width, settings.height, encoder.SequenceHeader()});
        chosen += EncodeAhead(
            encoder, Moving(content, settings, kPictures),
            [&](std::size_t place, const CodedPicture& coded) {
                check.Take(coded.data, encoder.Reconstruction(), static_cast<int>(place),
                           fmt::format("content {}, picture {}", static_cast<int>(content), place));
            });
        EXPECT_EQ(check.Finish(), "");
    }
    EXPECT_EQ(chosen > 0, LookaheadPictures(settings) > 0);
}

// High enough for the bands of a trial to be coded side by side.
TEST(EncoderStreams, AreTheSameWithMoreThreads) {
    constexpr int kPictures = 12;
    for (const Content content : {Content::Texture, Content::Noise, Content::Fade}) {
        const auto encode = [&](int threads) {
            const EncoderSettings settings{.width = 64,
                                           .height = 320,
                                           .preset = 60,
                                           .b_pictures = 2,
                                           .threads = threads,
                                           .adaptive = true};
            Encoder encoder(settings);
            std::vector<std::vector<std::uint8_t>> coded;
            EncodeAhead(encoder, Moving(content, settings, kPictures),
                        [&](std::size_t, const CodedPicture& picture) {
                            coded.emplace_back(picture.data.begin(), picture.data.end());
                        });
            return coded;
        };
        EXPECT_EQ(encode(3), encode(1)) << "content " << static_cast<int>(content);
    }
}

// Of each kind of picture, with blocks that are as large as they get, and with the usual ones.
TEST(EncoderStreams, OfEveryQuantiserDecode) {
    for (const double quantiser : AllQuantisers()) {
        for (const Content content : {Content::BlackAndWhite, Content::Texture}) {
            for (const bool adaptive : {false, true}) {
                SCOPED_TRACE(fmt::format("quantiser {}, content {}{}", quantiser,
                                         static_cast<int>(content), adaptive ? ", adaptive" : ""));
                const EncoderSettings settings{
                    .width = 48, .height = 32, .b_pictures = 1, .adaptive = adaptive};
                const Outcome outcome = EncodeAll(settings, {content}, Gops(5, 1, {quantiser}));
                EXPECT_EQ(outcome.fault, "");
                for (const Kept& kept : outcome.pictures) EXPECT_EQ(kept.quantiser, quantiser);
            }
        }
    }
}

TEST(EncoderStreams, TakeLessBeyondTheCoarsestQuantiser) {
    for (const bool adaptive : {false, true}) {
        const EncoderSettings settings{
            .width = 96, .height = 64, .b_pictures = 1, .adaptive = adaptive};
        const auto bytes_at = [&](double quantiser) {
            std::map<PictureKind, std::size_t> bytes;
            for (const Kept& kept : EncodeAll(settings, {}, Gops(9, 1, {quantiser})).pictures)
                bytes[kept.kind] += kept.data.size();
            return bytes;
        };
        const auto coarsest = bytes_at(31);
        const auto beyond = bytes_at(50);
        const auto farthest = bytes_at(kCoarsestAsked);
        for (const PictureKind kind : {PictureKind::kI, PictureKind::kP}) {
            EXPECT_LT(beyond.at(kind), coarsest.at(kind)) << adaptive;
            EXPECT_LT(farthest.at(kind), beyond.at(kind)) << adaptive;
        }
    }
}

TEST(EncoderStreams, SayTheirToolsInTheSequenceHeader) {
    SequenceHeader main;
    main.rate_hint = 7;
    main.bits_hint = 10;
    EXPECT_THAT(main.Bytes(), testing::ElementsAre(0x4E, 0xA9, 0x08, 0x0D));
    main.extended_vectors = true;
    main.varying_quantiser = true;
    main.overlap = true;
    main.most_b_pictures = 2;
    EXPECT_THAT(main.Bytes(), testing::ElementsAre(0x4E, 0xA9, 0x5A, 0x2D));
    SequenceHeader simple;
    simple.profile = Profile::Simple;
    simple.loop_filter = false;
    simple.short_chroma_vectors = true;
    simple.rate_hint = 0;
    simple.bits_hint = 0;
    EXPECT_THAT(simple.Bytes(), testing::ElementsAre(0x00, 0x01, 0x88, 0x0D));
}

TEST(EncoderStreams, MayHaveNoPictures) {
    Encoder encoder({.width = 64, .height = 48});
    encoder.Forget();
    EXPECT_EQ(StreamCheck({64, 48, encoder.SequenceHeader()}).Finish(), "");
}

}  // namespace
}  // namespace wmv9_conformance
