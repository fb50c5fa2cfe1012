// The header, field by field, through the independent reader.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <chrono>

#include "clips.h"
#include "engine/outputs/asf/frame_packetizer.h"
#include "engine/outputs/asf/header.h"
#include "engine/outputs/asf/packet_size.h"
#include "support/asf_reader.h"
#include "support/error_of.h"

namespace engine::asf {
namespace {

using test_support::ErrorNumber;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr HeaderFacts kFacts{.file_id = {0x01020304, 0x0506, 0x4708, {0x89, 1, 2, 3, 4, 5, 6, 7}},
                             .creation_date = 132'000'000'000'000'000,
                             .packet_bytes = 1400,
                             .preroll_ms = 5000};

OutputHeader Sample() {
    OutputHeader header = clips::MadeUp(0).header;
    header.content = {"Tür №1", "Ann Author", "", "\U0001F3B5 tune", "G"};
    header.attributes = {{"Level", -10},
                         {"Low", -3},
                         {"High", -3},
                         {"Größe", 2147483647},
                         {"Genre", std::string("Näher\U00010437")}};
    return header;
}

asf_reader::Header Build(const OutputHeader& header, const HeaderNumbers& numbers = {},
                         const HeaderFacts& facts = kFacts) {
    return asf_reader::ReadHeader(BuildHeader(header, facts, numbers));
}

TEST(Header, ObjectsStandInTheOrderThatPlayersKnow) {
    const asf_reader::Header h = Build(Sample());
    EXPECT_THAT(h.children, ElementsAre("8CABDCA1-A947-11CF-8EE4-00C00C205365",    // file
                                        "5FBF03B5-A92E-11CF-8EE3-00C00C205365",    // extension
                                        "86D15240-311D-11D0-A3A4-00A0C90348F6",    // codecs
                                        "B7DC0791-A9B7-11CF-8EE6-00C00C205365",    // audio
                                        "B7DC0791-A9B7-11CF-8EE6-00C00C205365",    // video
                                        "75B22633-668E-11CF-A6D9-00AA0062CE6C",    // description
                                        "D2D0A440-E307-11D2-97F0-00A0C95EA850",    // attributes
                                        "7BF875CE-468D-11D1-8D82-006097C9A2B2"));  // rates
    EXPECT_THAT(
        h.extension_children,
        ElementsAre("7C4346A9-EFE0-4BFC-B229-393EDE415C85", "14E6A5CB-C672-4332-8399-A96952065B5A",
                    "14E6A5CB-C672-4332-8399-A96952065B5A", "C5F8CBEA-5BAF-4877-8467-AA8C44FA4CCA",
                    "1806D474-CADF-4509-A4BA-9AABCB96AAE8"));
    EXPECT_THAT(h.languages, ElementsAre("en-us"));
    EXPECT_EQ(h.padding_bytes, 500U);
    EXPECT_EQ(h.file_id, "01020304-0506-4708-8901-020304050607");
}

TEST(Header, NumbersOfEachState) {
    HeaderNumbers finished{.complete = true,
                           .packets = 3'300'000,
                           .file_size = 4'620'009'000,
                           .play_duration = Ticks{36'050'000'000},
                           .send_duration = Ticks{36'000'000'000},
                           .largest_objects = {1487, 20'000'000},
                           .measured_rates = {1, 2}};
    HeaderNumbers live;
    live.packets = 0xFFFFFFFF;
    struct Row {
        const char* why;
        HeaderNumbers numbers;
        std::uint32_t flags;
        std::uint64_t data_size;
    };
    const Row rows[] = {
        {"recording: read to wherever it ends", {}, 1, 50},
        {"finished, past 4 GB", finished, 2, 4'620'000'050},
        {"live broadcast", live, 1, 50},
    };
    const std::size_t length = BuildHeader(Sample(), kFacts, {}).size();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const asf_reader::Header h = Build(Sample(), row.numbers);
        EXPECT_EQ(BuildHeader(Sample(), kFacts, row.numbers).size(), length);
        EXPECT_EQ(h.bytes + 50, length);
        EXPECT_EQ(h.flags, row.flags);
        EXPECT_EQ(h.data_size, row.data_size);
        EXPECT_EQ(h.packets, row.numbers.packets);
        EXPECT_EQ(h.data_packets, row.numbers.packets);
        EXPECT_EQ(h.file_size, row.numbers.file_size);
        EXPECT_EQ(h.play_duration, static_cast<std::uint64_t>(row.numbers.play_duration.count));
        EXPECT_EQ(h.send_duration, static_cast<std::uint64_t>(row.numbers.send_duration.count));
        EXPECT_EQ(h.creation_date, kFacts.creation_date);
        EXPECT_EQ(h.preroll_ms, 5000U);
        EXPECT_EQ(h.packet_bytes, 1400U);
        EXPECT_EQ(h.max_rate, 664040U * 1400 / 1371) << "peak of the video, packets' headers";
        EXPECT_THAT(h.stream_rates,
                    ElementsAre(Pair(1, 64040U * 1400 / 1371), Pair(2, 300000U * 1400 / 1371)));
        const auto& largest = row.numbers.largest_objects;
        EXPECT_EQ(h.extended_streams[1].largest_object, largest.empty() ? 0 : largest[1]);
    }
}

TEST(Header, StreamsAsTheyAre) {
    const asf_reader::Header h = Build(Sample());
    ASSERT_EQ(h.streams.size(), 2U);
    const asf_reader::StreamProperties& audio = h.streams[0];
    EXPECT_TRUE(audio.audio);
    EXPECT_EQ(audio.number, 1);
    EXPECT_EQ(audio.error_correction, "BFC3CD50-618F-11CF-8BB2-00AA00B4E220");
    EXPECT_THAT(audio.error_correction_data, ElementsAre(1, 0xCF, 5, 0xCF, 5, 1, 0, 0));
    EXPECT_THAT((std::vector{audio.format_tag, audio.channels, audio.sampling_rate,
                             audio.average_bytes, audio.block_align, audio.bits_per_sample}),
                ElementsAre(0x161, 2, 44100, 8005, 1487, 16));
    EXPECT_THAT(audio.extra_data, ElementsAre(0, 0, 0, 0, 0x1F, 0, 0, 0, 0, 0));
    const asf_reader::StreamProperties& video = h.streams[1];
    EXPECT_FALSE(video.audio);
    EXPECT_EQ(video.number, 2);
    EXPECT_EQ(video.error_correction, "20FB5700-5B55-11CF-A8FD-00805F5C442B");
    EXPECT_THAT(video.error_correction_data, IsEmpty());
    EXPECT_EQ(video.width, 321);
    EXPECT_EQ(video.height, 239);
    EXPECT_EQ(video.bit_count, 24U);
    EXPECT_EQ(video.four_cc, "WMV2");
    EXPECT_EQ(video.image_bytes, 964U * 239) << "rows end at four bytes";
    EXPECT_THAT(video.extra_data, ElementsAre(1, 2, 3, 4));

    ASSERT_EQ(h.codecs.size(), 2U);
    EXPECT_EQ(h.codecs[0].type, 2);
    EXPECT_EQ(h.codecs[0].name, "Windows Media Audio 9");
    EXPECT_EQ(h.codecs[0].description, "64 kbps, 44 kHz, stereo CBR");
    EXPECT_THAT(h.codecs[0].info, ElementsAre(0x61, 0x01));
    EXPECT_EQ(h.codecs[1].type, 1);
    EXPECT_EQ(h.codecs[1].name, "Windows Media Video 8");
    EXPECT_EQ(h.codecs[1].description, "");
    EXPECT_THAT(h.codecs[1].info, ElementsAre('W', 'M', 'V', '2'));

    ASSERT_EQ(h.extended_streams.size(), 2U);
    const asf_reader::ExtendedStream& audio_rates = h.extended_streams[0];
    EXPECT_EQ(audio_rates.number, 1);
    EXPECT_THAT((std::vector{audio_rates.rate, audio_rates.buffer_ms, audio_rates.fullness,
                             audio_rates.peak_rate, audio_rates.peak_buffer_ms,
                             audio_rates.peak_fullness, audio_rates.flags}),
                ElementsAre(64040, 2000, 0, 64040, 2000, 0, 2));
    EXPECT_EQ(audio_rates.ticks_per_frame, 0U);
    const asf_reader::ExtendedStream& video_rates = h.extended_streams[1];
    EXPECT_EQ(video_rates.number, 2);
    EXPECT_THAT((std::vector{video_rates.rate, video_rates.buffer_ms, video_rates.fullness,
                             video_rates.peak_rate, video_rates.peak_buffer_ms,
                             video_rates.peak_fullness, video_rates.flags}),
                ElementsAre(300000, 4000, 0, 600000, 5000, 0, 2));
    EXPECT_EQ(video_rates.ticks_per_frame, 400'000U);
}

std::string Line(const asf_reader::Attribute& a) {
    const auto* text = std::get_if<std::string>(&a.value);
    return fmt::format("{} {} type {} = {}", a.stream, a.name, a.type,
                       text ? *text : fmt::format("{:#010x}", std::get<std::uint32_t>(a.value)));
}

TEST(Header, TextsAndAttributes) {
    const asf_reader::Header h = Build(Sample());
    EXPECT_THAT(h.content, ElementsAre("Tür №1", "Ann Author", "", "\U0001F3B5 tune", "G"));
    std::vector<std::string> attributes, metadata;
    for (const auto& a : h.attributes) attributes.push_back(Line(a));
    for (const auto& a : h.metadata) metadata.push_back(Line(a));
    EXPECT_THAT(attributes, ElementsAre("0 Level type 3 = 0xfffffff6", "0 Low type 3 = 0xfffffffd",
                                        "0 High type 3 = 0xfffffffd", "0 Größe type 3 = 0x7fffffff",
                                        "0 Genre type 0 = Näher\U00010437"));
    EXPECT_THAT(metadata, ElementsAre("1 IsVBR type 2 = 0x00000000", "2 IsVBR type 2 = 0x00000001",
                                      "2 DeviceConformanceTemplate type 0 = MP@ML",
                                      "2 AspectRatioX type 3 = 0x0000000c",
                                      "2 AspectRatioY type 3 = 0x0000000b"));
    EXPECT_THAT(Build(clips::MadeUp(0).header).content, ElementsAre("", "", "", "", ""));
}

TEST(Header, LongTextsAreCutBetweenCharacters) {
    const auto repeat = [](const char* text, int count) {
        std::string all;
        for (int i = 0; i < count; ++i) all += text;
        return all;
    };
    OutputHeader header = Sample();
    // 32766 units hold 32766 letters, but only 16383 pairs; a letter before them leaves a gap.
    header.content.title = repeat("x", 40000);
    header.content.author = repeat("\U0001F3B5", 20000);
    header.content.copyright = "x" + repeat("\U0001F3B5", 20000);
    header.content.rating =
        "a\xFF\xC3(\xED\xA0\x80"
        "b\xF0\x9F";  // no UTF-8 but the letters
    header.attributes = {{"Long", repeat("é", 70000)}};
    const asf_reader::Header h = Build(header);
    EXPECT_EQ(h.content[0], repeat("x", 32766));
    EXPECT_EQ(h.content[1], repeat("\U0001F3B5", 16383));
    EXPECT_EQ(h.content[2], "x" + repeat("\U0001F3B5", 16382));
    EXPECT_EQ(h.content[4],
              "a\uFFFD\uFFFD(\uFFFD\uFFFD\uFFFD"
              "b\uFFFD\uFFFD");
    EXPECT_EQ(std::get<std::string>(h.attributes[0].value), repeat("é", 32766));
}

TEST(Header, PrerollIsTheLargestWindow) {
    struct Row {
        const char* why;
        std::uint32_t audio, video, peak, expected;
    };
    const Row rows[] = {
        {"the larger one", 2000, 4000, 0, 4000},
        {"a peak window counts", 2000, 1000, 8000, 8000},
        {"an unknown one is three seconds", 100, 0xFFFFFFFF, 0, 3000},
        {"no window at all", 0, 0, 0, 3000},
        {"a short one is kept", 0, 500, 0, 500},
    };
    for (const Row& row : rows) {
        OutputHeader header = clips::MadeUp(0).header;
        header.streams[0].buffer_ms = row.audio;
        header.streams[1].buffer_ms = row.video;
        header.streams[1].peak_buffer_ms = row.peak;
        EXPECT_EQ(PrerollMs(header), row.expected) << row.why;
    }
}

TEST(Header, RefusesWhatItsCountsCannotHold) {
    OutputHeader none;
    OutputHeader many = Sample();
    many.streams.resize(128);
    OutputHeader long_extra = Sample();
    long_extra.streams[1].extra_data.resize(65'500);
    OutputHeader attributes = Sample();
    attributes.attributes.resize(65'536);
    OutputHeader upside_down = Sample();
    std::get<VideoHeader>(upside_down.streams[1].format).height = -239;
    for (const OutputHeader* header : {&none, &many, &long_extra, &attributes, &upside_down})
        EXPECT_EQ(ErrorNumber([&] { BuildHeader(*header, kFacts, {}); }),
                  platform::kInvalidArgument);
}

TEST(Header, IdsAndDates) {
    const Guid one = RandomFileId();
    const Guid two = RandomFileId();
    EXPECT_NE(std::tie(one.first, one.rest), std::tie(two.first, two.rest));
    EXPECT_EQ(one.third >> 12, 4U);
    EXPECT_EQ(one.rest[0] >> 6, 2U);
    const auto unix_now = std::chrono::duration_cast<std::chrono::seconds>(
                              std::chrono::system_clock::now().time_since_epoch())
                              .count();
    EXPECT_NEAR(static_cast<double>(CreationDateNow()) / 1e7,  // 369 years with 89 leap days
                static_cast<double>(unix_now) + (369.0 * 365 + 89) * 86400, 60);
}

TEST(PacketSize, IsATenthOfASecondWithinTheLimits) {
    struct Row {
        const char* why;
        std::uint64_t rate;
        std::uint32_t min, max, expected;
    };
    const Row rows[] = {
        {"a tenth of a second", 80'000, 0, 0, 1000},
        {"low rates stay in one Ethernet frame", 349'000, 0, 0, 1400},
        {"above them the rate decides", 364'000, 0, 0, 4550},
        {"but not past 16000", 5'000'000, 0, 0, 16'000},
        {"an unknown rate", 0, 0, 0, 1400},
        {"a very low rate", 1000, 0, 0, 100},
        {"a maximum lifts the low limit", 349'000, 0, 8000, 4362},
        {"a maximum limits", 5'000'000, 0, 1400, 1400},
        {"a maximum past the format's", 5'000'000, 0, 100'000, 16'000},
        {"a minimum raises", 80'000, 3000, 0, 3000},
        {"the largest there is", 80'000, 65'536, 65'536, 65'536},
        {"both the same", 80'000, 576, 576, 576},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ChoosePacketSize(row.rate, row.min, row.max), row.expected) << row.why;
    const std::pair<std::uint32_t, std::uint32_t> refused[] = {
        {2000, 1400}, {0, 99}, {65'537, 0}, {100'000, 100'000}};
    for (const auto& row : refused)
        EXPECT_EQ(ErrorNumber([&] { ChoosePacketSize(1'000'000, row.first, row.second); }),
                  platform::kInvalidArgument)
            << row.first << " to " << row.second;
}

// A still screen has a packet each second, and little more.
TEST(AsfHeader, RecordingsHaveSmallPackets) {
    struct Row {
        const char* why;
        std::uint32_t rate;
        bool sparse;
        std::uint32_t min, max, expected;
    };
    const Row rows[] = {
        {"a file", 2'000'000, false, 0, 0, 16'000},
        {"a recording", 2'000'000, true, 0, 0, 4000},
        {"of a low rate", 300'000, true, 0, 0, 1400},
        {"that asks for larger ones", 2'000'000, true, 8000, 0, 8000},
        {"or only for a limit", 2'000'000, true, 0, 9000, 9000},
    };
    for (const Row& row : rows) {
        OutputHeader header;
        header.streams.resize(1);
        header.streams[0].format = VideoHeader();
        header.streams[0].average_rate_bps = row.rate;
        header.streams[0].buffer_ms = 5000;
        header.streams[0].sparse = row.sparse;
        header.min_packet_bytes = row.min;
        header.max_packet_bytes = row.max;
        std::size_t bytes = 0;
        FramePacketizer packets(header, [&](const auto& packet) { bytes = packet.bytes.size(); });
        const clips::Frame frame = {
            .stream = 0, .pts = {}, .dts = {}, .duration = {}, .key = true, .bytes = {1}};
        packets.Add(clips::Coded(frame));
        packets.Flush();
        EXPECT_EQ(bytes, row.expected) << row.why;
    }
}

}  // namespace
}  // namespace engine::asf
