// The file as it grows, ends early, fails and is finished.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>

#include "clips.h"
#include "engine/outputs/asf/asf_file.h"
#include "engine/outputs/asf/packet_size.h"
#include "engine/outputs/asf/part_name.h"
#include "engine/outputs/asf/repair.h"
#include "support/asf_reader.h"
#include "support/error_of.h"
#include "support/file_size_limit.h"

namespace engine::asf {
namespace {

namespace fs = std::filesystem;
using test_support::ErrorNumber;

TEST(AsfFile, FinishedHeaderHoldsWhatWasWritten) {
    const clips::Folder scratch;
    const std::string path = scratch.Path("a.wmv");
    clips::Clip clip = clips::MadeUp(7000);
    AsfFile sink(path);
    clips::WriteAll(sink, clip);
    sink.Finish();
    const asf_reader::File file = asf_reader::ReadFile(path);  // checks all sizes
    const asf_reader::Header& h = file.header;
    EXPECT_EQ(h.flags, 2U);
    EXPECT_EQ(h.packet_bytes, ChoosePacketSize(364040, 0, 0));
    EXPECT_EQ(h.packets, file.packets.size());
    const clips::Frame& last = *std::max_element(
        clip.frames.begin(), clip.frames.end(),
        [](const auto& a, const auto& b) { return a.pts + a.duration < b.pts + b.duration; });
    const Ticks end = last.pts + last.duration;
    EXPECT_EQ(h.play_duration, static_cast<std::uint64_t>(end.count) + 50'000'000);
    const asf_reader::Packet& packet = file.packets.back();
    EXPECT_EQ(h.send_duration, (packet.send_ms + packet.duration_ms) * 10'000ULL);
    EXPECT_GE(h.send_duration, 69'600'000U);
    std::uint32_t largest[2] = {};
    for (const clips::Frame& frame : clip.frames)
        largest[frame.stream] =
            std::max(largest[frame.stream], static_cast<std::uint32_t>(frame.bytes.size()));
    EXPECT_EQ(h.extended_streams[0].largest_object, largest[0]);
    EXPECT_EQ(h.extended_streams[1].largest_object, largest[1]);
    EXPECT_EQ(sink.Result().bytes, fs::file_size(path));
    EXPECT_EQ(sink.Result().duration, end);
}

TEST(AsfFile, RateThatNobodyStatedIsMeasured) {
    const clips::Folder scratch;
    clips::Clip clip = clips::MadeUp(4000);
    clip.header.streams[0].average_rate_bps = 0;
    clips::WriteFile(scratch.Path("a.wmv"), clip, 1400);
    const asf_reader::Header h = asf_reader::ReadFile(scratch.Path("a.wmv")).header;
    EXPECT_NEAR(h.extended_streams[0].rate, 1487 * 8 / 0.186, 300);
    EXPECT_EQ(h.stream_rates[0].second, RateInPackets(h.extended_streams[0].rate, 1400));
    EXPECT_EQ(h.max_rate, RateInPackets(600'000 + h.extended_streams[0].rate, 1400));
    EXPECT_EQ(h.streams[0].average_bytes, 8005U) << "the decoder's set-up is not touched";
}

TEST(AsfFile, AudioOrVideoAlone) {
    const clips::Clip both = clips::MadeUp(3000);
    for (const int kept : {0, 1}) {
        SCOPED_TRACE(kept);
        clips::Clip clip;
        clip.header.streams = {both.header.streams[static_cast<std::size_t>(kept)]};
        for (clips::Frame frame : both.frames)
            if (frame.stream == kept) {
                frame.stream = 0;
                clip.frames.push_back(frame);
            }
        const clips::Folder scratch;
        clips::WriteFile(scratch.Path("a.wma"), clip, 1400);
        const asf_reader::File file = asf_reader::ReadFile(scratch.Path("a.wma"));
        EXPECT_EQ(file.objects.size(), clip.frames.size());
        EXPECT_EQ(file.header.streams.at(0).number, 1);
        EXPECT_EQ(file.indexes.size(), kept == 0 ? 0U : 1U);
    }
}

TEST(AsfFile, NothingWrittenIsStillAFile) {
    const clips::Folder scratch;
    clips::WriteFile(scratch.Path("a.wmv"), {clips::MadeUp(0).header, {}}, 1400);
    const asf_reader::File file = asf_reader::ReadFile(scratch.Path("a.wmv"));
    EXPECT_TRUE(file.packets.empty());
    EXPECT_TRUE(file.indexes.empty());
    EXPECT_EQ(file.header.play_duration, 50'000'000U);
    EXPECT_EQ(test_support::DecodeMessages(scratch.Path("a.wmv")), "");
}

TEST(AsfFile, LessThanASecondIsEverOnTheWay) {
    struct Row {
        const char* why;
        std::uint32_t packet_bytes;
        int every;  // of the frames that are written
    };
    const Row rows[] = {
        {"packets of far more than a second", 65536, 1},
        {"small packets", 576, 1},
        {"a slide show", 1400, 20},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const clips::Folder scratch;
        clips::Clip clip = clips::MadeUp(6000);
        clip.header.min_packet_bytes = clip.header.max_packet_bytes = row.packet_bytes;
        AsfFile sink(scratch.Path("a.wmv"));
        sink.Begin(clip.header);
        for (std::size_t i = 0; i < clip.frames.size(); i += static_cast<std::size_t>(row.every)) {
            const clips::Frame& frame = clip.frames[i];
            sink.Write(clips::Coded(frame));
            if (i % 10 != 0) continue;
            // What a killed process would leave at this moment.
            const asf_reader::File file = asf_reader::ReadFile(scratch.Path("a.wmv.part"));
            const std::int64_t kept =
                file.objects.empty() ? 0 : file.objects.back().presentation_ms - 5000 + 40;
            EXPECT_GT(kept + 1000, frame.dts.Milliseconds());
            EXPECT_EQ(sink.Result().bytes, fs::file_size(scratch.Path("a.wmv.part")));
        }
    }
}

TEST(AsfFile, CutAnywhereItReadsToItsEnd) {
    const clips::Folder scratch;
    clips::Clip clip = clips::MadeUp(3000);
    clip.header.min_packet_bytes = clip.header.max_packet_bytes = 1400;
    {  // destroyed before Finish
        AsfFile sink(scratch.Path("a.wmv"));
        clips::WriteAll(sink, clip);
    }
    const std::vector<std::uint8_t> recording = asf_reader::FileBytes(scratch.Path("a.wmv.part"));
    const asf_reader::Header header = asf_reader::ReadHeader(recording);
    EXPECT_EQ(header.flags, 1U);
    const std::size_t data = header.bytes + 50;
    // The index is there, the header's numbers are not: the last moment before the end.
    clips::WriteFile(scratch.Path("b.wmv"), clip, 1400);
    std::vector<std::uint8_t> indexed = asf_reader::FileBytes(scratch.Path("b.wmv"));
    std::copy(recording.begin(), recording.begin() + static_cast<std::ptrdiff_t>(data),
              indexed.begin());

    struct Cut {
        const std::vector<std::uint8_t>& bytes;
        std::size_t length;
    };
    std::vector<Cut> cuts = {{indexed, indexed.size()}};
    for (std::size_t length = recording.size() + 1; length < indexed.size(); length += 13)
        cuts.push_back({indexed, length});
    for (std::size_t length = data; length <= recording.size(); length += 331)
        cuts.push_back({recording, length});
    const std::string path = scratch.Path("cut.wmv");
    for (const Cut& cut : cuts) {
        SCOPED_TRACE(cut.length);
        fs::remove(path);
        FILE* out = std::fopen(path.c_str(), "wb");
        std::fwrite(cut.bytes.data(), 1, cut.length, out);
        std::fclose(out);
        const std::size_t whole = (std::min(cut.length, recording.size()) - data) / 1400;
        const asf_reader::File expected = asf_reader::Read(
            {cut.bytes.begin(),
             cut.bytes.begin() + static_cast<std::ptrdiff_t>(data + whole * 1400)});
        ASSERT_EQ(expected.packets.size(), whole);
        const std::vector<clips::ReadBack> read = clips::ReadWithLibavformat(path);
        ASSERT_GE(read.size(), expected.objects.size());
        for (std::size_t i = 0; i < expected.objects.size(); ++i)
            ASSERT_EQ(read[i].bytes, expected.objects[i].bytes) << "frame " << i;
    }
}

TEST(AsfFile, NamesTheFileThatCannotBeMade) {
    const clips::Folder scratch;
    clips::WriteFile(scratch.Path("file"), clips::MadeUp(0), 1400);
    struct Row {
        const char* why;
        std::string path;
        std::uint32_t number;
    };
    const Row rows[] = {
        {"no such folder", scratch.Path("none/a.wmv"), platform::kPathNotFound},
        {"the folder is a file", scratch.Path("file/a.wmv"), platform::kPathNotFound},
        {"the file is a folder", scratch.Path("."), platform::kAccessDenied},
        {"the name is too long", scratch.Path(std::string(256, 'n')), platform::kInvalidArgument},
        {"no room for a header", "/dev/full", platform::kDiskFull},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        AsfFile sink(row.path);
        EXPECT_EQ(ErrorNumber([&] { sink.Begin(clips::MadeUp(0).header); }, {row.path}),
                  row.number);
        sink.Finish();  // nothing to complete
    }
    clips::Clip clip = clips::MadeUp(0);
    clip.header.min_packet_bytes = 2000;
    clip.header.max_packet_bytes = 1000;
    AsfFile sink(scratch.Path("refused.wmv"));
    EXPECT_EQ(ErrorNumber([&] { sink.Begin(clip.header); }, {"2000"}), platform::kInvalidArgument);
    EXPECT_FALSE(fs::exists(scratch.Path("refused.wmv")));
}

TEST(AsfFile, FullDiskLeavesAWholePartAndWhatWasThere) {
    clips::Clip clip = clips::MadeUp(20'000);
    clip.header.min_packet_bytes = clip.header.max_packet_bytes = 1400;
    const clips::Folder scratch;
    const std::string path = scratch.Path("a.wmv");
    clips::WriteFile(path, clip, 1400);
    const asf_reader::File whole = asf_reader::ReadFile(path);
    const std::uint64_t data = whole.header.bytes + 50;
    const std::uint64_t count = whole.packets.size();
    const std::vector<std::uint8_t> before = asf_reader::FileBytes(path);

    struct Row {
        const char* why;
        std::uint64_t room;
        std::uint64_t packets;  // that are kept
        std::uint32_t write, finish;
        std::size_t indexes;
    };
    const std::uint32_t full = platform::kDiskFull;
    const Row rows[] = {
        {"not one packet", data + 40, 0, full, 0, 0},
        {"in a packet, no room for an index", data + 100 * 1400 + 50, 100, full, 0, 0},
        {"in a packet, the index fits its place", data + 100 * 1400 + 1300, 100, full, 0, 1},
        {"between two packets", data + 100 * 1400, 100, full, 0, 0},
        {"in the last packet", data + count * 1400 - 1300, count - 1, 0, full, 0},
        {"only the index fails", data + count * 1400 + 60, count, 0, full, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        AsfFile sink(path);
        sink.Begin(clip.header);
        const FileSizeLimit disk(row.room);
        std::uint32_t failed = 0;
        for (std::size_t i = 0; i < clip.frames.size() && failed == 0; ++i)
            failed = ErrorNumber([&] { sink.Write(clips::Coded(clip.frames[i])); }, {path});
        EXPECT_EQ(failed, row.write);
        if (failed != 0) {
            EXPECT_EQ(ErrorNumber([&] { sink.Write(clips::Coded(clip.frames[0])); }, {path}),
                      failed);
        }
        EXPECT_EQ(ErrorNumber([&] { sink.Finish(); }, {path}), row.finish);
        EXPECT_TRUE(asf_reader::FileBytes(path) == before) << "the older file is touched";
        const std::string part = path + ".part";
        EXPECT_EQ(fs::exists(part), row.packets > 0);
        if (row.packets == 0) {
            EXPECT_EQ(sink.RemainsText(), "");
            continue;
        }
        EXPECT_THAT(sink.RemainsText(),
                    testing::HasSubstr(row.indexes == 0 ? "--repair" : "is whole"));
        const asf_reader::File file = asf_reader::ReadFile(part);  // checks all sizes
        EXPECT_EQ(file.header.flags, 2U);
        EXPECT_EQ(file.packets.size(), row.packets);
        EXPECT_EQ(file.indexes.size(), row.indexes);
        EXPECT_EQ(sink.Result().bytes, fs::file_size(part));
        const std::uint64_t last =
            file.objects.empty() ? 5000 : file.objects.back().presentation_ms;
        EXPECT_GE(file.header.play_duration, last * 10'000) << "the end of what is there";
        EXPECT_LE(file.header.play_duration, (last + 230) * 10'000);
    }
}

TEST(PartFile, TakesItsNameOnlyWhenItIsWhole) {
    const clips::Folder scratch;
    const std::string path = scratch.Path("a.wmv");
    const std::string part = path + ".part";
    const clips::Clip clip = clips::MadeUp(2000);
    clips::WriteFile(path, clips::MadeUp(1000), 1400);
    const std::vector<std::uint8_t> older = asf_reader::FileBytes(path);
    clips::WriteFile(scratch.Path("longer.wmv"), clips::MadeUp(9000), 1400);
    fs::rename(scratch.Path("longer.wmv"), part);  // of an earlier run
    {
        AsfFile sink(path);
        clips::WriteAll(sink, clip);
        EXPECT_TRUE(asf_reader::FileBytes(path) == older);
        AsfFile second(path);
        EXPECT_EQ(ErrorNumber([&] { second.Begin(clip.header); }, {path}), platform::kBusy);
        sink.Finish();
        EXPECT_FALSE(fs::exists(part));
        EXPECT_EQ(asf_reader::ReadFile(path).header.play_duration / 10'000'000, 7U);
        EXPECT_EQ(sink.RemainsText(), "");
    }
    {
        AsfFile sink(path);
        sink.Begin(clip.header);
    }
    EXPECT_FALSE(fs::exists(part)) << "nothing was written to it";
    {
        AsfFile sink(path);
        clips::WriteAll(sink, clip);
        sink.Abandon();
        EXPECT_THAT(sink.RemainsText(), testing::HasSubstr(part));
    }
    EXPECT_EQ(asf_reader::ReadFile(part).header.flags, 2U);
    fs::remove(part);
}

TEST(PartFile, ALinkLeadsToTheFileThatIsWritten) {
    const clips::Folder scratch;
    const clips::Clip clip = clips::MadeUp(1000);
    fs::create_directory(scratch.Path("folder"));
    fs::create_symlink("folder/a.wmv", scratch.Path("link.wmv"));
    fs::create_symlink(scratch.Path("link.wmv"), scratch.Path("second.wmv"));
    const std::string target = scratch.Path("folder/a.wmv");
    for (const char* name : {"link.wmv", "second.wmv", "link.wmv"}) {
        SCOPED_TRACE(name);  // first the target is not there
        AsfFile sink(scratch.Path(name));
        clips::WriteAll(sink, clip);
        EXPECT_TRUE(fs::exists(target + ".part"));
        sink.Finish();
        EXPECT_TRUE(fs::is_symlink(scratch.Path(name)));
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(target)));
        EXPECT_FALSE(fs::exists(target + ".part"));
    }
    fs::create_symlink("circle.wmv", scratch.Path("circle.wmv"));
    AsfFile sink(scratch.Path("circle.wmv"));
    EXPECT_EQ(ErrorNumber([&] { sink.Begin(clip.header); }, {"circle"}), platform::kPathNotFound);
}

TEST(PartFile, WhatIsNoPartIsLeftAlone) {
    const clips::Folder scratch;
    const std::string path = scratch.Path("a.wmv");
    const std::string part = path + ".part";
    const std::string other = scratch.Path("other");
    const clips::Clip clip = clips::MadeUp(1000);
    struct Row {
        const char* why;
        std::function<void()> make;
    };
    const Row rows[] = {
        {"another kind of file", [&] { std::ofstream(part) << "a long list of parts to order"; }},
        {"too short for any part", [&] { std::ofstream(part) << "0&"; }},
        {"a link to a container", [&] { fs::create_symlink(other, part); }},
        {"a link to nothing", [&] { fs::create_symlink(scratch.Path("nothing"), part); }},
        {"a FIFO", [&] { ASSERT_EQ(mkfifo(part.c_str(), 0600), 0); }},
    };
    clips::WriteFile(other, clip, 1400);
    const std::vector<std::uint8_t> before = asf_reader::FileBytes(other);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        row.make();
        const fs::file_type type = fs::symlink_status(part).type();
        const std::uintmax_t size = type == fs::file_type::regular ? fs::file_size(part) : 0;
        {
            AsfFile sink(path);
            EXPECT_EQ(ErrorNumber([&] { sink.Begin(clip.header); }, {part}), platform::kFileExists);
        }
        EXPECT_EQ(fs::symlink_status(part).type(), type);
        EXPECT_EQ(type == fs::file_type::regular ? fs::file_size(part) : 0, size);
        fs::remove(part);
    }
    EXPECT_TRUE(asf_reader::FileBytes(other) == before);
    EXPECT_FALSE(fs::exists(scratch.Path("nothing")));

    for (const bool is_read : {false, true}) {
        SCOPED_TRACE(is_read);
        fs::remove(path);
        ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
        const int reader = is_read ? open(path.c_str(), O_RDONLY | O_NONBLOCK) : -1;
        AsfFile sink(path);
        EXPECT_EQ(ErrorNumber([&] { sink.Begin(clip.header); }, {"FIFO"}),
                  platform::kInvalidArgument);
        if (is_read) close(reader);
    }
}

TEST(PartFile, NothingForeignGetsTheName) {
    const clips::Clip clip = clips::MadeUp(4000);
    struct Row {
        const char* why;
        std::function<void(const std::string& folder)> exchange;
        std::uint32_t number = platform::kFileNotFound;
    };
    const Row rows[] = {
        {"the part is removed", [](const std::string& f) { fs::remove(f + "/a.wmv.part"); }},
        {"the part is another's",
         [](const std::string& f) {
             fs::rename(f + "/a.wmv.part", f + "/moved");
             std::ofstream(f + "/a.wmv.part") << "foreign";
         }},
        {"the folder is another",
         [](const std::string& f) {
             fs::rename(f, f + "-moved");
             fs::create_directory(f);
             std::ofstream(f + "/a.wmv.part") << "foreign";
         }},
        {"the folder is gone", [](const std::string& f) { fs::remove_all(f); },
         platform::kPathNotFound},
    };
    for (const Row& row : rows) {
        for (const bool at_the_end : {false, true}) {
            SCOPED_TRACE(std::string(row.why) + (at_the_end ? " at the end" : ""));
            const clips::Folder scratch;
            const std::string folder = scratch.Path("folder");
            const std::string path = folder + "/a.wmv";
            fs::create_directory(folder);
            AsfFile sink(path);
            sink.Begin(clip.header);
            std::uint32_t failed = 0;
            for (std::size_t i = 0; i < clip.frames.size() && failed == 0; ++i) {
                if (i == (at_the_end ? clip.frames.size() - 1 : 50)) row.exchange(folder);
                failed = ErrorNumber([&] { sink.Write(clips::Coded(clip.frames[i])); }, {path});
            }
            const std::uint32_t finished = ErrorNumber([&] { sink.Finish(); }, {path});
            EXPECT_EQ(failed != 0 ? failed : finished, row.number);
            EXPECT_FALSE(fs::exists(path));
            EXPECT_EQ(sink.RemainsText(), "");
        }
    }
}

TEST(PartFile, NamesOfEveryLength) {
    const clips::Clip clip = clips::MadeUp(1000);
    const clips::Folder scratch;
    for (std::size_t length = 245; length <= 256; ++length) {
        SCOPED_TRACE(length);
        std::string name;
        while (name.size() + 6 <= length) name += "\u00E4";
        name.append(length - 4 - name.size(), 'x');
        const std::string path = scratch.Path(name + ".wmv");
        {
            AsfFile sink(path);
            if (length > 255) {
                EXPECT_EQ(ErrorNumber([&] { sink.Begin(clip.header); }, {path}),
                          platform::kInvalidArgument);
                continue;
            }
            clips::WriteAll(sink, clip);
            EXPECT_THAT(PartName(path), testing::EndsWith(".wmv.part"));
            ASSERT_TRUE(fs::exists(PartName(path)));
            sink.Abandon();
        }
        EXPECT_THAT(Repair(PartName(path)), testing::HasSubstr("Renamed to"));
        EXPECT_TRUE(fs::exists(TargetOfPart(PartName(path))));
        AsfFile again(path);
        clips::WriteAll(again, clip);
        again.Finish();
        EXPECT_TRUE(fs::exists(path));
        EXPECT_FALSE(fs::exists(PartName(path)));
    }
    EXPECT_NE(PartName(std::string(250, 'a') + "b"), PartName(std::string(250, 'a') + "c"));
}

}  // namespace
}  // namespace engine::asf
