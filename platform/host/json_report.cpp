#include "platform/host/json_report.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

namespace platform::host {

namespace {

using Json = nlohmann::ordered_json;

constexpr double kThousand = 1000.0;

const char* StateText(EncoderState state) {
    switch (state) {
        case EncoderState::Starting:
            return "starting";
        case EncoderState::Running:
            return "running";
        case EncoderState::Paused:
            return "paused";
        case EncoderState::Stopping:
            return "stopping";
        case EncoderState::Stopped:
            return "stopped";
        case EncoderState::EndPreprocess:
            return "end_preprocess";
    }
    return "unknown";
}

const char* EndText(CommandEnd end) {
    switch (end) {
        case CommandEnd::Shown:
            return "shown";
        case CommandEnd::Completed:
            return "completed";
        case CommandEnd::Stopped:
            return "stopped";
        case CommandEnd::Refused:
            return "refused";
        case CommandEnd::Failed:
            return "failed";
    }
    return "unknown";
}

void Write(ConsoleOutput& output, const Json& object) {
    output.WriteText(object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
}

Json TextOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

Json DropsObject(const DropCounts& drops) {
    Json object;
    object["capture_late"] = drops.capture_late;
    object["encoder_late"] = drops.encoder_late;
    object["rate_control"] = drops.rate_control;
    return object;
}

/// @param rate_name  what the expected and average sample rates are called in this medium
/// @param rate_unit  what they are counted in
Json StreamObject(const std::optional<StreamReport>& stream, const std::string& rate_name,
                  double rate_unit, const char* samples_name) {
    if (!stream) return {};
    const OutputStats& totals = stream->totals;
    Json object;
    object["codec"] = stream->codec;
    object["expected_bit_rate"] = totals.expected_bit_rate_bps;
    object["average_bit_rate"] = totals.average_bit_rate_bps;
    object["expected_" + rate_name] = totals.expected_sample_rate / rate_unit;
    object["average_" + rate_name] = totals.average_sample_rate / rate_unit;
    object["bytes"] = totals.byte_count.Raw();
    object["dropped_bytes"] = totals.dropped_byte_count.Raw();
    object[samples_name] = totals.sample_count.Raw();
    object[std::string("dropped_") + samples_name] = totals.dropped_sample_count.Raw();
    return object;
}

Json ErrorObject(const std::optional<ErrorReport>& error) {
    if (!error) return {};
    Json object;
    object["number"] = error->number == 0 ? Json() : Json(error->number);
    object["code"] = error->number == 0 ? Json() : Json(fmt::format("0x{:08X}", error->number));
    object["description"] = error->description;
    return object;
}

Json BroadcastObject(const std::optional<BroadcastStats>& broadcast) {
    if (!broadcast) return {};
    Json object;
    object["addresses"] = broadcast->addresses;
    object["clients"] = broadcast->clients;
    object["most_clients"] = broadcast->most_clients;
    object["clients_served"] = broadcast->clients_served;
    object["bytes_sent"] = broadcast->bytes_sent;
    object["frames_withheld"] = broadcast->frames_withheld;
    return object;
}

Json PushObject(const std::optional<PushStats>& push) {
    if (!push) return {};
    Json object;
    object["server"] = push->server;
    object["connected"] = push->connected;
    object["bytes_sent"] = push->bytes_sent;
    object["frames_dropped"] = push->frames_dropped;
    object["reconnections"] = push->reconnections;
    return object;
}

void AddFile(Json& object, const FileReport& report) {
    object["state"] = EndText(report.end);
    object["input"] = TextOrNull(report.input);
    object["output"] = TextOrNull(report.output);
    object["encoding_seconds"] = report.seconds;
    object["average_bit_rate"] = report.average_bit_rate_bps;
    const bool has_file = report.file.has_value();
    object["file_size"] = has_file ? Json(report.file->file_size.Raw()) : Json();
    object["file_seconds"] =
        has_file ? Json(static_cast<double>(report.file->file_duration.Raw()) / kThousand) : Json();
    object["audio"] = StreamObject(report.audio, "sample_rate", 1, "packets");
    object["video"] = StreamObject(report.video, "frame_rate", kThousand, "frames");
    if (report.video) object["video"]["dropped_by_cause"] = DropsObject(report.video->totals.drops);
    object["broadcast"] = BroadcastObject(report.network.broadcast);
    object["push"] = PushObject(report.network.push);
    object["error"] = ErrorObject(report.error);
}

}  // namespace

void JsonReport::BeginCommand() {
    ++command_;
    state_ = EncoderState::Stopped;
}

void JsonReport::WriteProgress(const RunProgress& progress) {
    state_ = progress.state;
    Json object;
    object["type"] = "progress";
    object["command"] = command_;
    object["state"] = StateText(progress.state);
    object["input"] = TextOrNull(progress.input);
    object["seconds"] = static_cast<double>(progress.encoded_ms) / kThousand;
    object["percent"] = progress.percent;
    object["pass"] = progress.pass;
    object["passes"] = progress.passes;
    object["expected_bit_rate"] = progress.total.expected_bit_rate_bps;
    object["current_bit_rate"] = progress.total.current_bit_rate_bps;
    object["average_bit_rate"] = progress.total.average_bit_rate_bps;
    object["dropped_frames"] = progress.dropped_frames;
    object["dropped_bytes"] = progress.dropped_bytes;
    object["dropped_by_cause"] = DropsObject(progress.total.drops);
    object["broadcast"] = BroadcastObject(progress.network.broadcast);
    object["push"] = PushObject(progress.network.push);
    Write(output_, object);
}

void JsonReport::WriteState(const RunProgress& progress) {
    if (progress.state != state_) WriteProgress(progress);
}

void JsonReport::OnFileEnd(const FileReport& report) {
    Json object;
    object["type"] = "file";
    object["command"] = command_;
    AddFile(object, report);
    Write(output_, object);
}

void JsonReport::WriteReport(const CommandReport& report, ExitStatus status) {
    Json object;
    object["type"] = "report";
    object["command"] = command_;
    AddFile(object, report.last);
    if (report.is_folder) {
        object["files_completed"] = report.files_completed;
        object["files_failed"] = report.files_failed;
        object["files_skipped"] = report.files_skipped;
    }
    object["notices"] = report.notices;
    object["exit_status"] = Number(status);
    Write(output_, object);
}

void WriteJsonFailure(ConsoleOutput& output, const std::string& description, ExitStatus status) {
    CommandReport report;
    report.last.end = status == ExitStatus::Refused ? CommandEnd::Refused : CommandEnd::Failed;
    report.last.error = ErrorReport{0, description};
    JsonReport(output).WriteReport(report, status);
}

}  // namespace platform::host
