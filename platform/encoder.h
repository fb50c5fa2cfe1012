// The encoder object model: the tree on which a session is set up, started and watched.
//
// Every operation that fails throws platform::Error and nothing else. All objects are used on the
// user-interface thread; events arrive there. Properties remember what was set; contradictions
// between them are found by WMEncoder::PrepareToEncode. Indices of streams and outputs are 0.
#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/credentials.h"
#include "platform/error.h"

namespace platform {

class FileSystem;

enum class SourceType : std::int32_t { Audio = 1, Video = 2, Script = 4, FileTransfer = 8 };

enum class EncoderState : std::int32_t {
    Starting = 1,
    Running = 2,
    Paused = 3,
    Stopping = 4,
    Stopped = 5,
    EndPreprocess = 6,
};

/// Rate control of a stream.
enum class VbrMode : std::int32_t { Constant = 1, Peak = 2, Quality = 3, BitRate = 4 };

enum class BroadcastProtocol : std::int32_t { Http = 1 };

inline constexpr std::int32_t kContentAudio = 1;
inline constexpr std::int32_t kContentVideo = 16;
inline constexpr std::int32_t kContentAudioVideo = 17;

/// A code of four characters as a 32-bit number, the first character in the lowest byte.
constexpr std::uint32_t FourCC(const char (&code)[5]) {
    const auto byte = [&](int i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(code[i]));
    };
    return byte(0) | byte(1) << 8U | byte(2) << 16U | byte(3) << 24U;
}

/// A fixed-point number with four decimals, kept as a 64-bit count of ten-thousandths. The
/// encoder's counters arrive as that raw count: a byte count of 12345 is the currency 1.2345.
class Currency {
  public:
    constexpr Currency() = default;
    static constexpr Currency FromRaw(std::int64_t ten_thousandths) {
        Currency value;
        value.raw_ = ten_thousandths;
        return value;
    }
    constexpr std::int64_t Raw() const { return raw_; }
    constexpr auto operator<=>(const Currency&) const = default;

  private:
    std::int64_t raw_ = 0;
};

/// Why pictures were left out; together they are the dropped samples.
struct DropCounts {
    std::int64_t capture_late = 0;  // due, and not had in time from the source
    std::int64_t encoder_late = 0;  // had to give way to newer ones before they were encoded
    std::int64_t rate_control = 0;  // left out to keep the bit rate
};

/// What one output (a stream's, or the whole Windows Media output) has done so far.
struct OutputStats {
    std::int32_t expected_bit_rate_bps = 0;
    std::int32_t average_bit_rate_bps = 0;
    std::int32_t current_bit_rate_bps = 0;
    std::int32_t expected_sample_rate = 0;  // audio: Hz; video: thousandths of a frame per second
    std::int32_t average_sample_rate = 0;   // the same
    Currency dropped_byte_count;            // raw counts
    Currency dropped_sample_count;
    Currency byte_count;
    Currency sample_count;
    DropCounts drops = {};  // of pictures
};

struct FileArchiveStats {
    Currency file_size;      // raw count of bytes
    Currency file_duration;  // raw count of milliseconds
};

/// What a broadcast has given to those who listen.
struct BroadcastStats {
    std::vector<std::string> addresses;  // to give out, "http://192.0.2.7:8080/"; the best first
    std::int32_t clients = 0;            // that are served now
    std::int32_t most_clients = 0;       // at once
    std::int64_t clients_served = 0;     // so far
    std::int64_t bytes_sent = 0;
    std::int64_t frames_withheld = 0;  // from clients that were too slow
};

/// What a server has been given that hands the stream out.
struct PushStats {
    std::string server;      // with the publishing point, for people
    bool connected = false;  // now
    std::int32_t reconnections = 0;
    std::int64_t bytes_sent = 0;
    std::int64_t frames_dropped = 0;  // while the way was closed or too narrow
};

/// What has gone out over a network; a kind of output that a run does not have is none.
struct NetworkStats {
    std::optional<BroadcastStats> broadcast;
    std::optional<PushStats> push;
};

class WMEncStatistics {
  public:
    virtual ~WMEncStatistics() = default;
    /// Raw count of milliseconds of media time that the running pass has encoded. Never goes back
    /// within a pass; starts from 0 again in the second.
    virtual Currency EncodingTime() = 0;
    /// Throws Error (invalid argument) for a stream that the session does not have.
    virtual OutputStats StreamOutputStats(SourceType type, int stream, int output) = 0;
    virtual OutputStats WMFOutputStats() = 0;
    /// Throws Error (file not found) when no file was written.
    virtual platform::FileArchiveStats FileArchiveStats() = 0;
    virtual platform::NetworkStats NetworkStats() { return {}; }
};

class WMEncSource {
  public:
    virtual ~WMEncSource() = default;
    virtual SourceType Type() const = 0;
    /// A media file by its path (scheme empty), a device's name (scheme "device"), or the screen
    /// (scheme "screencap"). Throws Error when a file cannot be opened or has no such stream, or a
    /// device or the screen is not there or cannot be recorded.
    virtual void SetInput(const std::string& input, const std::string& scheme) = 0;
    void SetInput(const std::string& input) { SetInput(input, std::string()); }
    virtual std::string Input() const = 0;
    virtual std::string Scheme() const = 0;
    virtual std::int32_t MarkIn() const = 0;  // milliseconds; 0 = from the start
    virtual void SetMarkIn(std::int32_t milliseconds) = 0;
    virtual std::int32_t MarkOut() const = 0;  // milliseconds; 0 = to the end
    virtual void SetMarkOut(std::int32_t milliseconds) = 0;
    virtual std::int32_t Duration() const = 0;  // milliseconds; 0 = unknown or live
    virtual std::int32_t PreProcessPass() const = 0;
    virtual void SetPreProcessPass(std::int32_t passes) = 0;  // 0 or 1
};

class WMEncAudioSource : public WMEncSource {
  public:
    SourceType Type() const final { return SourceType::Audio; }
    virtual std::int32_t ContentMode() const = 0;
    virtual void SetContentMode(std::int32_t mode) = 0;  // 0..2, voice codec only
    virtual std::string ContentEDL() const = 0;
    virtual void SetContentEDL(const std::string& file) = 0;
    /// Which device is recorded, in words; "" when none is.
    virtual std::string CaptureDevice() const = 0;
};

class WMEncVideoSource : public WMEncSource {
  public:
    SourceType Type() const final { return SourceType::Video; }
    virtual std::int32_t Optimization() const = 0;
    virtual void SetOptimization(std::int32_t optimization) = 0;
    virtual std::uint32_t PixelFormat() const = 0;  // 0 = the source's own
    virtual void SetPixelFormat(std::uint32_t format) = 0;
    virtual std::int32_t PixelAspectRatioX() const = 0;
    virtual void SetPixelAspectRatioX(std::int32_t x) = 0;
    virtual std::int32_t PixelAspectRatioY() const = 0;
    virtual void SetPixelAspectRatioY(std::int32_t y) = 0;
    virtual std::int32_t CroppingLeftMargin() const = 0;
    virtual void SetCroppingLeftMargin(std::int32_t pixels) = 0;
    virtual std::int32_t CroppingRightMargin() const = 0;
    virtual void SetCroppingRightMargin(std::int32_t pixels) = 0;
    virtual std::int32_t CroppingTopMargin() const = 0;
    virtual void SetCroppingTopMargin(std::int32_t pixels) = 0;
    virtual std::int32_t CroppingBottomMargin() const = 0;
    virtual void SetCroppingBottomMargin(std::int32_t pixels) = 0;
    /// At which rate pictures are captured when the audience's is not lower: thousandths of a
    /// picture per second, 30000 unless set.
    virtual std::int32_t CaptureRate() const = 0;
    virtual void SetCaptureRate(std::int32_t thousandths) = 0;
    /// Which part of the screen is captured, in words; "" when none is.
    virtual std::string CaptureArea() const = 0;
    /// How long a still picture lasts when it has no end mark; 10000 unless set. Milliseconds.
    virtual std::int32_t StillDuration() const = 0;
    virtual void SetStillDuration(std::int32_t milliseconds) = 0;
};

/// The source as its own kind; null when it is of the other kind or null itself.
inline std::shared_ptr<WMEncAudioSource> AsAudio(const std::shared_ptr<WMEncSource>& source) {
    return std::dynamic_pointer_cast<WMEncAudioSource>(source);
}
inline std::shared_ptr<WMEncVideoSource> AsVideo(const std::shared_ptr<WMEncSource>& source) {
    return std::dynamic_pointer_cast<WMEncVideoSource>(source);
}

using PropertyValue = std::variant<std::monostate, bool, std::int32_t, std::string>;

/// One audience of a profile: what each stream is encoded to. Rates in bits per second, buffers and
/// distances in milliseconds, frame rates in thousandths of a frame per second. A codec set by
/// index is remembered as a codec: the index names the same one in every rate-control mode.
class WMEncAudience {
  public:
    virtual ~WMEncAudience() = default;

    virtual std::int32_t AudioCodec(int stream) const = 0;
    virtual void SetAudioCodec(int stream, std::int32_t index) = 0;
    virtual std::int32_t AudioBufferMax(int stream) const = 0;
    virtual void SetAudioBufferMax(int stream, std::int32_t milliseconds) = 0;
    virtual std::int32_t AudioPeakBitrate(int stream) const = 0;
    virtual void SetAudioPeakBitrate(int stream, std::int32_t bps) = 0;
    /// Chooses the codec's format with these channels, sampling rate (Hz) and bits per sample whose
    /// rate rounds to the same kilobits per second; in quality mode the rate argument is the
    /// quality. Without such a format the values are remembered as they stand: codec and mode may
    /// still change, and PrepareToEncode refuses what does not fit then, with what the codec
    /// offers. Throws Error (invalid argument) for a value that no codec could have.
    virtual void SetAudioConfig(int stream, std::int32_t channels, std::int32_t sampling_rate,
                                std::int32_t bit_rate, std::int32_t bits_per_sample) = 0;
    virtual std::int32_t AudioBitrate(int stream) const = 0;  // quality in quality mode
    virtual std::int32_t AudioChannels(int stream) const = 0;
    virtual std::int32_t AudioSamplingRate(int stream) const = 0;
    virtual std::int32_t AudioBitsPerSample(int stream) const = 0;

    virtual std::int32_t VideoCodec(int stream) const = 0;
    virtual void SetVideoCodec(int stream, std::int32_t index) = 0;
    virtual std::int32_t VideoBitrate(int stream) const = 0;
    virtual void SetVideoBitrate(int stream, std::int32_t bps) = 0;
    virtual std::int32_t VideoWidth(int stream) const = 0;  // 0 = the source's
    virtual void SetVideoWidth(int stream, std::int32_t pixels) = 0;
    virtual std::int32_t VideoHeight(int stream) const = 0;  // 0 = the source's
    virtual void SetVideoHeight(int stream, std::int32_t pixels) = 0;
    virtual std::int32_t VideoFPS(int stream) const = 0;
    virtual void SetVideoFPS(int stream, std::int32_t thousandths) = 0;
    virtual std::int32_t VideoKeyFrameDistance(int stream) const = 0;
    virtual void SetVideoKeyFrameDistance(int stream, std::int32_t milliseconds) = 0;
    virtual std::int32_t VideoBufferSize(int stream) const = 0;
    virtual void SetVideoBufferSize(int stream, std::int32_t milliseconds) = 0;
    virtual std::int32_t VideoImageSharpness(int stream) const = 0;  // 0..100
    virtual void SetVideoImageSharpness(int stream, std::int32_t sharpness) = 0;
    virtual std::int32_t VideoCompressionQuality(int stream) const = 0;  // 0..100
    virtual void SetVideoCompressionQuality(int stream, std::int32_t quality) = 0;
    virtual std::int32_t VideoBufferMax(int stream) const = 0;
    virtual void SetVideoBufferMax(int stream, std::int32_t milliseconds) = 0;
    virtual std::int32_t VideoPeakBitrate(int stream) const = 0;
    virtual void SetVideoPeakBitrate(int stream, std::int32_t bps) = 0;
    /// Named extras, for example "DeviceConformanceTarget" (text) of the video stream.
    virtual PropertyValue Property(SourceType type, int stream, const std::string& name) const = 0;
    virtual void SetProperty(SourceType type, int stream, const std::string& name,
                             const PropertyValue& value) = 0;
};

class WMEncProfile2 {
  public:
    virtual ~WMEncProfile2() = default;

    /// kContentAudio, kContentVideo, both; 0 = none. Of what was set, the streams that a loaded
    /// file has.
    virtual std::int32_t ContentType() const = 0;
    virtual void SetContentType(std::int32_t content_type) = 0;
    virtual std::string ProfileName() const = 0;
    virtual void SetProfileName(const std::string& name) = 0;
    virtual std::shared_ptr<WMEncAudience> AddAudience(std::int32_t bit_rate_bps) = 0;
    virtual int AudienceCount() const = 0;
    /// Throws Error (invalid argument) past the last one.
    virtual std::shared_ptr<WMEncAudience> Audience(int index) = 0;

    /// Rate control of a stream; the lists below are those of the mode set last for their type.
    virtual VbrMode VBRMode(SourceType type, int stream) const = 0;
    virtual void SetVBRMode(SourceType type, int stream, VbrMode mode) = 0;
    virtual int AudioCodecCount() const = 0;
    virtual int VideoCodecCount() const = 0;
    virtual std::string EnumAudioCodec(int index) const = 0;  // display name
    virtual std::string EnumVideoCodec(int index) const = 0;
    /// Wave format tag or FourCC; 0 for uncompressed.
    virtual std::uint32_t GetCodecFourCCFromIndex(SourceType type, int index) const = 0;
    /// Throws Error (invalid argument) for a codec that is not listed.
    virtual int GetCodecIndexFromFourCC(SourceType type, std::uint32_t four_cc) const = 0;
    virtual int AudioFormatCount(int codec_index) const = 0;
    /// The format's bit rate (bits per second), in quality mode its quality.
    virtual std::int32_t EnumAudioFormat(int codec_index, int format_index,
                                         std::int32_t& sampling_rate, std::int32_t& channels,
                                         std::int32_t& bits_per_sample) const = 0;

    virtual bool NonSquarePixelMode(int stream) const = 0;
    virtual void SetNonSquarePixelMode(int stream, bool on) = 0;
    virtual bool InterlaceMode(int stream) const = 0;
    virtual void SetInterlaceMode(int stream, bool on) = 0;
    virtual std::int32_t MinPacketSize() const = 0;  // bytes; 0 = none asked for
    virtual void SetMinPacketSize(std::int32_t bytes) = 0;
    virtual std::int32_t MaxPacketSize() const = 0;  // bytes; 0 = none asked for
    virtual void SetMaxPacketSize(std::int32_t bytes) = 0;

    /// Takes over the audience of a profile file. Throws Error for a file that cannot be read or is
    /// none, and for a codec that is not encoded here; the profile is then as it was.
    virtual void LoadFromFile(const std::string& path) = 0;
    /// What was unknown in the file that was loaded is written too. A file of that name is
    /// replaced, or left as it was when this fails.
    virtual void SaveToFile(const std::string& path) = 0;
    /// Throws what SaveToFile would before it writes; writes nothing.
    virtual void CheckSaveToFile(const std::string& /*path*/) const {}
    /// What a person should know of the file that was loaded, a line each; none when asked again.
    virtual std::vector<std::string> TakeNotes() { return {}; }
    /// Takes over everything that `profile` (a source group's) holds.
    virtual void LoadFromIWMProfile(const WMEncProfile2& profile) = 0;
};

class WMEncSourceGroup {
  public:
    virtual ~WMEncSourceGroup() = default;
    virtual std::string Name() const = 0;
    /// A new source of that kind. Throws Error (invalid argument) for kinds without sources.
    virtual std::shared_ptr<WMEncSource> AddSource(SourceType type) = 0;
    /// Adds a source for each kind of stream (audio, video) that the media file has. Throws Error
    /// when the file cannot be opened or has neither.
    virtual void AutoSetFileSource(const std::string& path) = 0;
    virtual int SourceCount(SourceType type) const = 0;
    /// Throws Error (invalid argument) past the last one.
    virtual std::shared_ptr<WMEncSource> Source(SourceType type, int index) = 0;
    /// The group's own copy of the profile that was attached; null without one.
    virtual std::shared_ptr<WMEncProfile2> Profile() = 0;
    virtual void SetProfile(const WMEncProfile2& profile) = 0;
};

class WMEncSourceGroupCollection {
  public:
    virtual ~WMEncSourceGroupCollection() = default;
    virtual std::shared_ptr<WMEncSourceGroup> Add(const std::string& name) = 0;
    virtual int Count() const = 0;
    /// Throws Error (invalid argument) past the last one.
    virtual std::shared_ptr<WMEncSourceGroup> Item(int index) = 0;
    /// Removes a group with its sources. An unknown name is no error.
    virtual void Remove(const std::string& name) = 0;
};

class WMEncFile {
  public:
    virtual ~WMEncFile() = default;
    /// "" = no file output.
    virtual std::string LocalFileName() const = 0;
    virtual void SetLocalFileName(const std::string& path) = 0;
};

class WMEncBroadcast {
  public:
    virtual ~WMEncBroadcast() = default;
    virtual std::int32_t PortNumber(BroadcastProtocol protocol) const = 0;  // 0 = off
    virtual void SetPortNumber(BroadcastProtocol protocol, std::int32_t port) = 0;
    virtual std::string ServerName() const = 0;  // "" = no push
    virtual void SetServerName(const std::string& name) = 0;
    virtual std::string PublishingPoint() const = 0;
    virtual void SetPublishingPoint(const std::string& name) = 0;
    virtual std::string Template() const = 0;
    virtual void SetTemplate(const std::string& name) = 0;
};

class WMEncDisplayInfo {
  public:
    virtual ~WMEncDisplayInfo() = default;
    virtual std::string Title() const = 0;
    virtual void SetTitle(const std::string& text) = 0;
    virtual std::string Author() const = 0;
    virtual void SetAuthor(const std::string& text) = 0;
    virtual std::string Copyright() const = 0;
    virtual void SetCopyright(const std::string& text) = 0;
    virtual std::string Description() const = 0;
    virtual void SetDescription(const std::string& text) = 0;
    virtual std::string Rating() const = 0;
    virtual void SetRating(const std::string& text) = 0;
};

using AttributeValue = std::variant<std::int32_t, std::string>;

class WMEncAttributes {
  public:
    virtual ~WMEncAttributes() = default;
    virtual void Add(const std::string& name, const AttributeValue& value) = 0;
    virtual int Count() const = 0;
    /// Throws Error (invalid argument) past the last one.
    virtual std::pair<std::string, AttributeValue> Item(int index) const = 0;
};

/// What a source plug-in captures.
enum class PluginMediaType : std::int32_t {
    Audio = 1,
    Video = 2,
    AudioVideo = 3,
    Script = 4,
    VideoScript = 6,
};

class WMEncSourcePluginInfo {
  public:
    virtual ~WMEncSourcePluginInfo() = default;
    virtual bool Resources() const = 0;  // offers devices
    virtual PluginMediaType MediaType() const = 0;
    virtual int Count() const = 0;                  // devices
    virtual std::string Item(int index) const = 0;  // a device's name
};

class WMEncSourcePluginInfoManager {
  public:
    virtual ~WMEncSourcePluginInfoManager() = default;
    virtual int Count() const = 0;
    /// Throws Error (invalid argument) past the last one.
    virtual std::shared_ptr<WMEncSourcePluginInfo> Item(int index) = 0;
};

/// Receives the encoder's events on the user-interface thread.
class WMEncoderEvents {
  public:
    virtual ~WMEncoderEvents() = default;
    virtual void OnStateChange(EncoderState state) = 0;
    /// A failure while running; the run then ends and the stopped state follows.
    virtual void OnError(std::int32_t number, const std::string& description) = 0;
    /// A sentence that the person should know while all goes well: from within PrepareToEncode, or
    /// before the stopped state.
    virtual void OnNotice(const std::string& /*text*/) {}
    /// Who pushes, from within PrepareToEncode or Start. May run the loop for as long as the answer
    /// is wanted: Stop ends that.
    virtual CredentialsAnswer OnCredentials(const CredentialsQuestion& /*question*/) { return {}; }
};

class WMEncoder {
  public:
    virtual ~WMEncoder() = default;

    virtual WMEncSourceGroupCollection& SourceGroupCollection() = 0;
    virtual WMEncFile& File() = 0;
    virtual WMEncBroadcast& Broadcast() = 0;
    virtual WMEncDisplayInfo& DisplayInfo() = 0;
    virtual WMEncAttributes& Attributes() = 0;
    virtual WMEncStatistics& Statistics() = 0;
    virtual WMEncSourcePluginInfoManager& SourcePluginInfoManager() = 0;

    /// Stop by itself when all file sources have ended.
    virtual bool AutoStop() const = 0;
    virtual void SetAutoStop(bool on) = 0;
    /// Speed against quality of the video encoders: 0 fastest to 100 best.
    virtual std::int32_t VideoPerformance() const = 0;
    virtual void SetVideoPerformance(std::int32_t performance) = 0;

    /// Takes over the session of a file in the place of this object's. Throws Error for a file that
    /// cannot be read or is none; the session is then as it was. An input that cannot be opened is
    /// refused by PrepareToEncode.
    virtual void Load(const std::string& path) = 0;
    /// Writes the session as it is set up, with what was unknown in the file that was loaded. A
    /// file of that name is replaced, or left as it was when this fails.
    virtual void Save(const std::string& path) = 0;

    /// Checks the whole session and readies it. `force` prepares again when prepared already.
    virtual void PrepareToEncode(bool force) = 0;
    /// Throws what PrepareToEncode would of the session as it stands, with `files` for what is
    /// there already. Opens no device, asks nobody and readies nothing.
    virtual void CheckToEncode(FileSystem& /*files*/) {}
    /// What loading or the last preparation, and the run since, found that a person should know, a
    /// line each; none when asked again.
    virtual std::vector<std::string> TakeNotes() = 0;
    /// Returns at once; states and errors follow as events. Prepares first when that has not been
    /// done, and then fails with prepare's error. A paused encoder goes on.
    virtual void Start() = 0;
    /// Returns at once; Paused follows. Until Start nothing is taken in: a file waits, and of what
    /// is recorded live that time is left out, so that the file has no gap. Pausing what does not
    /// run, or is stopping, is no error and no event. Stop ends a paused encoder too.
    virtual void Pause() = 0;
    /// Graceful: all that was taken in is encoded and written, the file is finished, then Stopped
    /// arrives. Returns at once. Stopping what does not run is no error and no event.
    virtual void Stop() = 0;
    virtual EncoderState RunState() const = 0;

    /// The listener must outlive the encoder or be taken away with null; no event comes after that.
    virtual void SetEvents(WMEncoderEvents* events) = 0;
};

}  // namespace platform
