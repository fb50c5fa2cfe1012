// A session as the pipeline runs it: plain values, checked for contradictions, never changed.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "engine/base/stream_header.h"
#include "engine/base/ticks.h"
#include "engine/plan/camera_format.h"
#include "engine/plan/device.h"
#include "engine/plan/network_settings.h"
#include "engine/plan/screen_area.h"
#include "engine/plan/screen_share.h"
#include "engine/plan/voice_content.h"
#include "engine/plan/written_audio.h"
#include "platform/codec_table.h"
#include "platform/pixel_format_table.h"

namespace engine {

struct Ratio {
    std::int64_t numerator = 0;
    std::int64_t denominator = 1;
};

/// A device or a screen that is recorded.
struct CapturePlan {
    DeviceKind kind = DeviceKind::Screen;
    std::string id;         // a device's
    std::string name;       // for people
    ScreenArea area;        // of a screen
    std::int32_t rate = 0;  // frames in 1000 seconds
    /// Of a screen that the desktop hands out: the screen, once it has. Not known before the plan.
    std::shared_ptr<ScreenShare> share = {};
    CameraFormat camera = {};   // of a camera: how it is to give its frames
    std::string mixed_id = {};  // of a sound device that is heard with the first; "" = none
    bool operator==(const CapturePlan&) const = default;
};

/// A media file, a still image, or what is captured, and the part of it that is encoded. Marks
/// count from the file's first timestamp, or from the first frame that is captured.
struct InputPlan {
    std::string path;  // the host's own; "" = captured
    std::optional<CapturePlan> capture;
    bool still = false;
    Ticks mark_in;
    Ticks mark_out;  // 0 = to the end; of a still image never 0
    bool operator==(const InputPlan&) const = default;

    /// For people.
    const std::string& Name() const { return capture ? capture->name : path; }
};

/// What is cut off a frame, in pixels of the upright source.
struct Margins {
    std::int32_t left = 0;
    std::int32_t right = 0;
    std::int32_t top = 0;
    std::int32_t bottom = 0;
    bool operator==(const Margins&) const = default;
};

/// How 2:3 pulldown lies in a source: of the five frames AA BB BC CD DD that four of film make (the
/// letters say which film frames gave the two fields), the one that the source begins with.
struct TelecinePattern {
    std::int32_t first_frame = 0;  // 0 = AA to 4 = DD
    bool bottom_first = false;     // of the fields
};

/// By how many decibels channels beside the front ones are lowered where more than two become two;
/// 144, the whole range of 24-bit audio, leaves them out. The usual levels are those that ITU-R
/// BS.775 gives for two-channel audio.
struct Downmix {
    static constexpr std::int32_t kSilence = 144;
    std::int32_t surround = 3;
    std::int32_t center = 3;
    std::int32_t lfe = kSilence;
    bool operator==(const Downmix&) const = default;
};

struct AudioPlan {
    InputPlan input;
    const platform::AudioCodecRow* codec = nullptr;  // as asked for
    AudioFormat format{};           // as asked for; in quality mode `value` is the quality
    WrittenAudio written;           // what the encoder is given and the header says
    std::string codec_name;         // for the file's codec list
    std::string codec_description;  // "64 kbps, 44 kHz, stereo CBR", of what is written
    platform::VbrMode mode = platform::VbrMode::Constant;
    std::int32_t peak_rate_bps = 0;   // peak mode only
    std::int32_t peak_buffer_ms = 0;  // peak mode only
    Downmix downmix;
    VoiceContent content;  // of the voice codec
};

/// Whether frames are coded as two fields, and which one is shown first.
enum class FieldCoding : std::uint8_t { None, AsTheSource, TopFirst, BottomFirst };

struct VideoPlan {
    InputPlan input;
    const platform::VideoCodecRow* codec = nullptr;  // as asked for
    std::string codec_name;                          // for the file's codec list
    std::string codec_description;
    platform::VbrMode mode = platform::VbrMode::Constant;
    FieldCoding fields = FieldCoding::None;
    /// How pixels are laid out that are written uncompressed; otherwise what frames are turned
    /// into on their way to the encoder. Null = as it comes.
    const platform::PixelFormatRow* pixels = nullptr;
    Margins crop;            // clipped before the frame is scaled
    std::int32_t width = 0;  // of the coded frame, at least 2
    std::int32_t height = 0;
    Ratio pixel_aspect{1, 1};        // of the coded frame
    std::int32_t rate_ceiling = 0;   // thousandths of a frame per second
    std::int32_t expected_rate = 0;  // the lower of ceiling and source rate, thousandths
    std::int32_t bit_rate_bps = 0;
    std::int32_t buffer_ms = 0;
    std::int32_t sharpness = 75;      // 0..100, smoothness against sharpness
    std::int32_t quality = 75;        // 0..100, quality mode only
    std::int32_t peak_rate_bps = 0;   // peak mode only
    std::int32_t peak_buffer_ms = 0;  // peak mode only
    std::int32_t key_frame_distance_ms = 0;
    bool joined = false;            // by players at any time: no key frame is put off
    std::int32_t performance = 60;  // 0 fastest to 100 best
    int encoder_threads = 0;        // 0 = as the machine has processors
    bool deinterlace = false;
    bool remove_telecine = false;             // where it is detected
    std::optional<TelecinePattern> telecine;  // removed without looking
    std::string conformance;                  // device conformance target, "" = none
    bool simple_profile = false;              // of that
    /// What a device that conforms can take; 0 = no limit.
    std::int64_t level_rate_bps = 0;
    std::int64_t level_buffer_bits = 0;
};

/// A file that holds the whole session.
struct FileOutput {
    std::string path;  // the host's own
    /// A file that has the name already is renamed, not replaced: what was recorded cannot be had
    /// again.
    bool keeps_existing = false;
};

/// A port that players connect to.
struct BroadcastOutput {
    std::uint16_t port = 0;  // above 0
    std::string address;     // to listen at; "" = all of the machine
    int most_clients = 2000;
};

/// A server's publishing point that the stream is sent to.
struct PushOutput {
    std::string server;  // "media.example:8080"
    std::string publishing_point;
    std::string template_name;  // an existing point to make this one after; "" = none
    platform::Credentials credentials;
    AskCredentials ask = {};                       // when the session begins, and none are known
    std::string agent = "Tessivo/9.0";             // what the server is told of this program
    bool any_server = false;                       // also one that does not name the protocol
    std::uint64_t body_bytes = 2'147'483'647;      // of a request, after which the next one begins
    std::chrono::seconds answer_time{10};          // that the server may take
    std::chrono::milliseconds first_pause{1'000};  // before a lost connection is made again
    std::chrono::milliseconds longest_pause{30'000};
};

/// Where the coded streams go.
using OutputPlan = std::variant<FileOutput, BroadcastOutput, PushOutput>;

struct EncodePlan {
    std::optional<AudioPlan> audio;
    std::optional<VideoPlan> video;
    int passes = 1;         // 2: all inputs are read twice
    bool auto_stop = true;  // a file session always ends with its input
    Ticks media_length;     // of the longer stream; 0 = unknown
    std::vector<OutputPlan> outputs;
    ContentDescription content;
    std::vector<std::pair<std::string, platform::AttributeValue>> attributes;
    std::uint32_t min_packet_bytes = 0;  // 0 = not asked for
    std::uint32_t max_packet_bytes = 0;
    std::vector<std::string> notices;  // what the person should know of it, a sentence each

    /// Of the file among the outputs; "" where there is none.
    std::string FilePath() const {
        for (const OutputPlan& output : outputs)
            if (const auto* file = std::get_if<FileOutput>(&output)) return file->path;
        return {};
    }
    /// All inputs of a plan are live, or none is.
    bool IsLive() const {
        return (audio && audio->input.capture) || (video && video->input.capture);
    }
    /// Whether what is encoded goes out at the pace at which it is shown.
    bool IsStreamed() const {
        return std::any_of(outputs.begin(), outputs.end(), [](const OutputPlan& output) {
            return !std::holds_alternative<FileOutput>(output);
        });
    }
    /// Whether the desktop has to hand out a screen before the plan can be run.
    bool LacksScreen() const {
        return video && video->input.capture && video->input.capture->id == kPortalDevice &&
               !video->input.capture->share;
    }
};

/// The frame rate that rate control and header count with, in thousandths: never 0.
inline std::int32_t CodedFrameRate(const VideoPlan& plan) {
    constexpr std::int32_t kUsualFrameRate = 30'000;
    if (plan.expected_rate > 0) return plan.expected_rate;
    return plan.rate_ceiling > 0 ? plan.rate_ceiling : kUsualFrameRate;
}

}  // namespace engine
