#include "engine/outputs/asf/asf_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cassert>
#include <utility>

namespace engine::asf {

AsfFile::AsfFile(std::string path, bool keeps_existing)
    : path_(std::move(path)), keeps_existing_(keeps_existing) {}

AsfFile::~AsfFile() {
    if (part_ && !done_ && packets_ == 0) part_->Discard();
}

void AsfFile::Begin(const OutputHeader& header) {
    assert(!part_);
    packetizer_.emplace(header, [this](const ClosedPacket& packet) { TakePacket(packet); });
    const std::vector<std::uint8_t> bytes = packetizer_->Header(HeaderNumbers{});

    totals_.resize(header.streams.size());
    for (const StreamHeader& stream : header.streams) {
        index_of_.push_back(indexes_.size());
        if (stream.Kind() == MediaKind::Video) indexes_.emplace_back();
    }
    part_.emplace(path_);
    try {
        part_->Append(bytes);
    } catch (const platform::Error&) {
        part_->Discard();
        part_.reset();
        throw;
    }
    data_begin_ = bytes.size();
}

void AsfFile::Write(const CodedFrame& frame) {
    if (failure_) throw platform::Error(*failure_);
    const auto index = static_cast<std::size_t>(frame.stream);
    assert(part_ && index < totals_.size());
    try {
        packetizer_->Add(frame);
    } catch (const platform::Error& error) {
        failure_ = error;
        throw;
    }
    StreamTotals& totals = totals_[index];
    totals.bytes += frame.bytes.size();
    totals.largest_object =
        std::max(totals.largest_object, static_cast<std::uint32_t>(frame.bytes.size()));
}

void AsfFile::Flush() {
    if (failure_) throw platform::Error(*failure_);
    try {
        packetizer_->Flush();
    } catch (const platform::Error& error) {
        failure_ = error;
        throw;
    }
}

void AsfFile::TakePacket(const ClosedPacket& packet) {
    part_->Append(packet.bytes);
    if (packet.key_frame)
        indexes_[index_of_[packet.key_frame->stream_number - 1U]].Add(*packet.key_frame);
    last_ = packet;
    last_.bytes = {};
    ++packets_;
}

void AsfFile::Finish() {
    if (!part_) return;  // Begin failed
    platform::ErrorTrap trap;
    Complete(trap);
    if (!failure_ && !trap.HasError()) {
        trap([&] {
            if (keeps_existing_)
                set_aside_ = part_->PublishBeside();
            else
                part_->Publish();
        });
    } else if (packets_ == 0) {
        part_->Discard();
    }
    if (trap.HasError()) throw platform::Error(trap.UnsignedNumber(), trap.Description());
}

void AsfFile::Abandon() {
    if (!part_) return;
    platform::ErrorTrap ignored;  // the session's failure is the one that counts
    Complete(ignored);
    if (packets_ == 0) part_->Discard();
}

void AsfFile::Complete(platform::ErrorTrap& trap) {
    done_ = true;
    HostFile& file = part_->File();
    if (!failure_) trap([&] { packetizer_->Flush(); });
    if (failure_ || trap.HasError()) trap([&] { file.CutTo(DataEnd()); });
    trap([&] { AppendIndexes(); });
    trap([&] {
        file.Overwrite(packetizer_->Header(FinalNumbers()));
        whole_ = indexes_.empty() || index_bytes_ > 0;
    });
}

void AsfFile::AppendIndexes() {
    // Behind no packets, readers would take an index for the first one.
    if (indexes_.empty() || packets_ == 0) return;
    ByteWriter out;
    for (SimpleIndex& index : indexes_)
        index.AppendTo(out, packetizer_->Facts().file_id, last_.last_pts_ms);
    try {
        part_->File().Append(out.bytes());
        index_bytes_ = out.size();
    } catch (const platform::Error&) {
        part_->File().CutTo(DataEnd());
        if (!failure_) throw;  // else the caller knows of the full disk already
    }
}

std::string AsfFile::NoticeText() const {
    if (set_aside_.empty()) return {};
    return fmt::format("\"{}\" was there already; that file is \"{}\" now.", path_, set_aside_);
}

std::string AsfFile::RemainsText() const {
    const std::string part = part_ ? part_->Remains() : std::string();
    if (part.empty()) return "";
    if (whole_)
        return fmt::format(
            "What was encoded until then is in \"{}\", which is whole and plays; rename it to keep "
            "it",
            part);
    return fmt::format(
        "What was encoded until then is in \"{0}\", which plays; tessivo-console --repair \"{0}\" "
        "makes it whole",
        part);
}

HeaderNumbers AsfFile::FinalNumbers() const {
    const Ticks preroll = Ticks::FromMilliseconds(packetizer_->Facts().preroll_ms);
    HeaderNumbers numbers{
        .complete = true,
        .packets = packets_,
        .file_size = Result().bytes,
        .play_duration = last_.media_end + preroll,
        .send_duration = Ticks::FromMilliseconds(last_.send_ms + last_.duration_ms),
        .largest_objects = {},
        .measured_rates = {},
    };
    const double seconds = last_.media_end.Seconds();
    for (const StreamTotals& totals : totals_) {
        const double rate = seconds > 0 ? 8.0 * static_cast<double>(totals.bytes) / seconds : 0;
        numbers.largest_objects.push_back(totals.largest_object);
        numbers.measured_rates.push_back(static_cast<std::uint32_t>(std::min(rate, 4.0e9)));
    }
    return numbers;
}

std::uint64_t AsfFile::DataEnd() const {
    return packetizer_ ? data_begin_ + packets_ * packetizer_->Facts().packet_bytes : 0;
}

OutputResult AsfFile::Result() const {
    return {.bytes = DataEnd() + index_bytes_, .duration = last_.media_end};
}

}  // namespace engine::asf
