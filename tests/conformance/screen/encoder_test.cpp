// The encoder on drawn desktops, beside a decoder that shares nothing with it.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "codecs/screen/encoder.h"
#include "conformance/screen/desktop.h"
#include "conformance/screen/screen_check.h"
#include "conformance/wmv9/random.h"

namespace screen_conformance {
namespace {

using codecs::Index;
using codecs::screen::CodedFrame;
using codecs::screen::Encoder;
using codecs::screen::EncoderSettings;
using codecs::screen::FrameRequest;
using codecs::screen::StreamFormat;
using wmv9_conformance::Random;

using Frame = std::vector<std::uint32_t>;

EncoderSettings SettingsFor(const DesktopSettings& desktop) {
    EncoderSettings settings;
    settings.width = desktop.width;
    settings.height = desktop.height;
    settings.reconstructs = true;
    return settings;
}

StreamFormat FormatOf(const EncoderSettings& settings) {
    StreamFormat format;
    format.width = settings.width;
    format.height = settings.height;
    return format;
}

int Difference(std::uint32_t a, std::uint32_t b) {
    int most = 0;
    for (const int shift : {0, 8, 16})
        most = std::max(most, std::abs(static_cast<int>(a >> shift & 0xFF) -
                                       static_cast<int>(b >> shift & 0xFF)));
    return most;
}

/// How far any pixel is from the source; rows of the one are those of the other from below.
int WorstPixel(const Frame& source, std::span<const std::uint32_t> shown, int width) {
    const std::size_t rows = source.size() / Index(width);
    int worst = 0;
    for (std::size_t y = 0; y < rows; ++y)
        for (std::size_t x = 0; x < Index(width); ++x)
            worst = std::max(worst, Difference(source[y * Index(width) + x],
                                               shown[(rows - 1 - y) * Index(width) + x]));
    return worst;
}

double MeanError(const Frame& source, std::span<const std::uint32_t> shown, int width) {
    const std::size_t rows = source.size() / Index(width);
    double sum = 0;
    for (std::size_t y = 0; y < rows; ++y)
        for (std::size_t x = 0; x < Index(width); ++x)
            sum +=
                Difference(source[y * Index(width) + x], shown[(rows - 1 - y) * Index(width) + x]);
    return sum / static_cast<double>(source.size());
}

struct Scene {
    const char* why;
    DesktopSettings desktop;
    bool exact;  // all its colours have a place in the palette
    bool quick;
};
// clang-format off
const Scene kScenes[] = {
    // why                                              desktop                                                                        exact  quick
    {"text that scrolls, in few colours",               {.colours = 40},                                                               true,  false},
    {"colours for which there is just no mask",          {.colours = 255},                                                              false, false},
    {"more colours than that",                          {.colours = 700},                                                              false, false},
    {"a window dragged over text",                      {.width = 320, .height = 240, .colours = 20, .text = false, .window = true},   true,  false},
    {"key frames as runs",                              {.colours = 90},                                                               true,  true},
    {"a window over a photo",                           {.width = 320, .height = 240, .text = false, .window = true, .photo = true},   false, false},
    {"a film beside scrolling text",                    {.width = 319, .height = 241, .photo = true, .film = true},                    false, false},
    {"a film beside a window, in a picture of odd size",{.width = 203, .height = 157, .text = false, .window = true, .film = true},    false, true},
};
// clang-format on

class Scenes : public testing::TestWithParam<int> {};

TEST_P(Scenes, DecodeToWhatTheEncoderSays) {
    const Scene& scene = kScenes[GetParam()];
    SCOPED_TRACE(scene.why);
    EncoderSettings settings = SettingsFor(scene.desktop);
    settings.quick = scene.quick;
    Encoder encoder(settings);
    ScreenCheck check(FormatOf(settings));
    std::vector<Frame> frames(3);
    Random random(1, GetParam());
    for (int i = 0; i < 24; ++i) {
        // A frame is coded again and again, as when nothing moves, and some are thrown away.
        const int number = i - i / 3 % 2;
        Frame& frame = frames[Index(i % 3)];
        frame = DesktopFrame(scene.desktop, number);
        FrameRequest request;
        request.seconds = 0.3 * i;
        request.key = random.Roll(8);
        request.moving_bits = random.Pick({1e3, 1e5, 1e7});
        request.resting_bits = random.Pick({0.0, 2e4, 1e7});
        const CodedFrame coded = encoder.Encode(BottomUp(frame, settings.width), request);
        ASSERT_EQ(check.Take(coded.data, encoder.Shown()), "") << "frame " << i;
        EXPECT_EQ(coded.key, coded.data[0] >> 7 == 1);
        if (scene.exact) {
            EXPECT_EQ(WorstPixel(frame, encoder.Shown(), settings.width), 0);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Desktops, Scenes, testing::Range(0, static_cast<int>(std::size(kScenes))));

// A frame of at most 255 colours is lossless, also when it has others than the one before.
TEST(ScreenEncoder, TakesAPaletteThatHasAllColours) {
    EncoderSettings settings;
    settings.width = 64;
    settings.height = 48;
    settings.reconstructs = true;
    Encoder encoder(settings);
    std::vector<Frame> frames(3, Frame(64 * 48));
    for (int i = 0; i < 3; ++i) {
        Random random(3, i);
        Frame& frame = frames[Index(i)];
        std::vector<std::uint32_t> colours(i == 1 ? 20 : 255);
        for (auto& colour : colours) colour = static_cast<std::uint32_t>(random.Next() & 0xFFFFFF);
        for (std::size_t at = 0; at < frame.size(); ++at) frame[at] = colours[at % colours.size()];
        FrameRequest request;
        request.seconds = 2.0 * i;
        encoder.Encode(BottomUp(frame, settings.width), request);
        EXPECT_EQ(WorstPixel(frame, encoder.Shown(), settings.width), 0) << "frame " << i;
    }
}

// What a frame that was thrown away has taught must be forgotten.
TEST(ScreenEncoder, ForgetsFramesThatAreDropped) {
    const DesktopSettings desktop{.width = 240, .height = 160, .window = true, .photo = true};
    EncoderSettings settings = SettingsFor(desktop);
    settings.reconstructs = false;
    Encoder dropping(settings);
    Encoder plain(settings);
    std::vector<Frame> frames;
    for (int i = 0; i < 16; ++i) frames.push_back(DesktopFrame(desktop, i));
    for (int i = 0; i < 16; ++i) {
        FrameRequest request;
        request.seconds = 0.2 * i;
        const auto view = BottomUp(frames[Index(i)], settings.width);
        if (i % 4 == 3 || i == 6) {
            FrameRequest other = request;
            other.key = i == 6;
            dropping.Encode(view, other);
            dropping.Forget();
            if (i != 6) continue;
        }
        const CodedFrame kept = dropping.Encode(view, request);
        const std::vector<std::uint8_t> bytes(kept.data.begin(), kept.data.end());
        const CodedFrame other = plain.Encode(view, request);
        EXPECT_TRUE(std::ranges::equal(bytes, other.data)) << "frame " << i;
    }
}

TEST(ScreenEncoder, ThreadsChangeNoByte) {
    const DesktopSettings desktop{.width = 320, .height = 240, .photo = true, .film = true};
    EncoderSettings settings = SettingsFor(desktop);
    Encoder one(settings);
    settings.threads = 4;
    Encoder four(settings);
    std::vector<Frame> frames(6);
    for (int i = 0; i < 6; ++i) {
        frames[Index(i)] = DesktopFrame(desktop, i);
        FrameRequest request;
        request.seconds = 0.2 * i;
        const CodedFrame a = one.Encode(BottomUp(frames[Index(i)], settings.width), request);
        const CodedFrame b = four.Encode(BottomUp(frames[Index(i)], settings.width), request);
        EXPECT_TRUE(std::ranges::equal(a.data, b.data)) << "frame " << i;
    }
}

// Where it is known what may differ, nothing else is looked at.
TEST(ScreenEncoder, DamageChangesNoByte) {
    EncoderSettings settings;
    settings.width = 203;
    settings.height = 157;
    Encoder told(settings);
    Encoder plain(settings);
    std::vector<Frame> frames(3, Frame(Index(203) * Index(157), 0xC0C0C0));
    for (int i = 0; i < 30; ++i) {
        Random random(7, i);
        Frame& frame = frames[Index(i % 3)];
        if (i > 0) frame = frames[Index((i + 2) % 3)];
        FrameRequest request;
        request.seconds = 0.1 * i;
        const codecs::screen::Rect drawn{random.Between(0, 150), random.Between(0, 120),
                                         random.Between(1, 50), random.Between(1, 30)};
        for (int y = drawn.y; y < drawn.y + drawn.height; ++y)
            for (int x = drawn.x; x < drawn.x + drawn.width; ++x)
                frame[Index((156 - y) * 203 + x)] =
                    static_cast<std::uint32_t>(x * y % 5 * 0x203040);
        const CodedFrame a = plain.Encode(BottomUp(frame, settings.width), request);
        request.changed = drawn;
        const CodedFrame b = told.Encode(BottomUp(frame, settings.width), request);
        EXPECT_TRUE(std::ranges::equal(a.data, b.data)) << "frame " << i;
    }
}

// A photo first shown coarsely becomes as fine as was asked once it rests; after that nothing is
// coded any more.
TEST(ScreenEncoder, SharpensWhatRestsAndThenSendsNothing) {
    const DesktopSettings desktop{.width = 320, .height = 240, .text = false, .photo = true};
    const EncoderSettings settings = SettingsFor(desktop);
    Encoder encoder(settings);
    const Frame frame = DesktopFrame(desktop, 0);
    FrameRequest request;
    request.moving_bits = 3e4;
    request.resting_bits = 0;
    encoder.Encode(BottomUp(frame, settings.width), request);
    const double coarse = MeanError(frame, encoder.Shown(), settings.width);
    request.resting_bits = 1e5;
    CodedFrame coded;
    int frames = 0;
    do {
        request.seconds += 0.3;
        coded = encoder.Encode(BottomUp(frame, settings.width), request);
        ASSERT_LT(++frames, 60);
    } while (coded.may_sharpen);
    request.seconds += 0.3;
    coded = encoder.Encode(BottomUp(frame, settings.width), request);
    EXPECT_TRUE(coded.unchanged);
    EXPECT_LE(coded.data.size(), 3U);
    Encoder spending(settings);
    spending.Encode(BottomUp(frame, settings.width), FrameRequest());
    const double best = MeanError(frame, spending.Shown(), settings.width);
    EXPECT_LE(MeanError(frame, encoder.Shown(), settings.width), best);
    EXPECT_GT(coarse, 1.2 * best);
}

// A photo, unmoved text, and a film whose colours the palette has too: those of the film would cost
// more than is there.
Frame FilmOfFewColours(int number) {
    constexpr int kSide = 96;  // pixels, of each of the three
    Frame frame(std::size_t{3} * kSide * kSide);
    Random photo(5, 0);
    Random film(5, number);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < 3 * kSide; ++x) {
            std::uint32_t& pixel = frame[Index(y * 3 * kSide + x)];
            if (x < kSide)
                pixel = static_cast<std::uint32_t>(photo.Next() & 0xFFFFFF);
            else if (x < 2 * kSide)
                pixel = (x * y) % 7 == 0 ? 0x102030 : 0xF0F0F0;
            else
                pixel = 0x040404 * static_cast<std::uint32_t>(film.Next() & 0x3F);
        }
    return frame;
}

TEST(ScreenEncoder, PaintsFilmsOfFewColoursUntilTheyRest) {
    EncoderSettings settings;
    settings.width = 288;
    settings.height = 96;
    settings.reconstructs = true;
    Encoder encoder(settings);
    const auto worst = [&](const Frame& frame, int from, int to) {
        int most = 0;
        for (int y = 0; y < settings.height; ++y)
            for (int x = from; x < to; ++x)
                most = std::max(most, Difference(frame[Index(y * 288 + x)],
                                                 encoder.Shown()[Index((95 - y) * 288 + x)]));
        return most;
    };
    std::vector<Frame> frames;
    for (int i = 0; i < 8; ++i) frames.push_back(FilmOfFewColours(i));
    FrameRequest request;
    request.moving_bits = 1e3;
    for (const Frame& frame : frames) {
        request.seconds += 0.05;
        encoder.Encode(BottomUp(frame, settings.width), request);
        EXPECT_EQ(worst(frame, 96, 192), 0) << request.seconds;
    }
    EXPECT_GT(worst(frames.back(), 192, 288), 8);
    for (int i = 0; i < 2; ++i) {
        request.seconds += 0.3;
        encoder.Encode(BottomUp(frames.back(), settings.width), request);
    }
    EXPECT_EQ(worst(frames.back(), 192, 288), 0);
}

// Rectangles become coarser where bits are few; text beside them does not.
TEST(ScreenEncoder, SpendsOnPhotosWhatTextLeaves) {
    const DesktopSettings desktop{.width = 320, .height = 240, .photo = true, .film = true};
    const EncoderSettings settings = SettingsFor(desktop);
    std::size_t last = 0;
    for (const double bits : {2e4, 1e5, 4e5}) {
        Encoder encoder(settings);
        std::vector<Frame> frames(3);
        CodedFrame coded;
        for (int i = 0; i < 8; ++i) {
            frames[Index(i % 3)] = DesktopFrame(desktop, i);
            FrameRequest request;
            request.seconds = 0.2 * i;
            request.moving_bits = bits;
            request.resting_bits = 0;
            coded = encoder.Encode(BottomUp(frames[Index(i % 3)], settings.width), request);
        }
        EXPECT_GT(coded.data.size(), last) << bits;
        last = coded.data.size();
        const Frame& frame = frames[7 % 3];
        const auto shown = encoder.Shown();
        for (int y = 0; y < settings.height; ++y)
            for (int x = 0; x < settings.width / 2 - 16; ++x)
                ASSERT_EQ(frame[Index(y * settings.width + x)],
                          shown[Index((settings.height - 1 - y) * settings.width + x)])
                    << x << ',' << y;
    }
}

}  // namespace
}  // namespace screen_conformance
