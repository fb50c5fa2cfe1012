#include "session/explain.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "cli/option_table.h"
#include "platform/encoder.h"
#include "platform/text.h"

namespace session {
namespace {

using cli::EncodeSettings;
using platform::SourceType;
using platform::VbrMode;
using platform::WMEncAudience;
using platform::WMEncAudioSource;
using platform::WMEncBroadcast;
using platform::WMEncDisplayInfo;
using platform::WMEncVideoSource;

// The options that decide a property's value, the one that has the last word first.
using Deciders = std::array<std::string_view, 4>;

bool Given(const EncodeSettings& settings, std::string_view name) {
    const cli::Option* const option = cli::FindOption(name);  // none for a place left empty
    return option != nullptr && cli::Given(*option, settings);
}

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\\') {
            escaped += "\\\\";
        } else if (byte < 0x20 || byte == 0x7F) {
            escaped += fmt::format("\\x{:02X}", byte);
        } else {
            escaped += c;
        }
    }
    return escaped;
}

std::string ValueText(const std::string& value) { return value; }
std::string ValueText(bool value) { return value ? "true" : "false"; }
std::string ValueText(std::int32_t value) { return fmt::to_string(value); }

std::string ModeText(VbrMode mode) {
    switch (mode) {
        case VbrMode::Constant:
            return "constant";
        case VbrMode::Peak:
            return "peak";
        case VbrMode::Quality:
            return "quality";
        case VbrMode::BitRate:
            return "bit rate";
    }
    return fmt::to_string(static_cast<int>(mode));
}

std::string ContentText(std::int32_t content) {
    switch (content) {
        case platform::kContentAudio:
            return "audio";
        case platform::kContentVideo:
            return "video";
        case platform::kContentAudioVideo:
            return "audio and video";
        default:
            return "none";
    }
}

/// A code of four printable characters as such, any other as a number.
std::string FormatText(std::uint32_t format) {
    std::string text;
    for (unsigned shift = 0; shift < 32; shift += 8)
        text += static_cast<char>(format >> shift & 0xFFU);
    const bool printable =
        std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
    return printable ? text : fmt::format("0x{:X}", format);
}

template <typename Object, typename Value>
struct Row {
    std::string_view name;
    Value (Object::*value)() const;
    Deciders deciders;
};
using AudioNumber = Row<WMEncAudioSource, std::int32_t>;
using VideoNumber = Row<WMEncVideoSource, std::int32_t>;
using BroadcastText = Row<WMEncBroadcast, std::string>;
using DisplayText = Row<WMEncDisplayInfo, std::string>;

struct AudienceRow {
    std::string_view name;
    std::int32_t (WMEncAudience::*value)(int) const;
    Deciders deciders;
};

// clang-format off
constexpr VideoNumber kVideoNumbers[] = {
    // property                     value                                       decided by
    {"video.Optimization",          &WMEncVideoSource::Optimization,            {"-v_preproc", "-profile"}},
    {"video.PixelAspectRatioX",     &WMEncVideoSource::PixelAspectRatioX,       {"-pixelratio"}},
    {"video.PixelAspectRatioY",     &WMEncVideoSource::PixelAspectRatioY,       {"-pixelratio"}},
    {"video.CroppingLeftMargin",    &WMEncVideoSource::CroppingLeftMargin,      {"-v_clip"}},
    {"video.CroppingTopMargin",     &WMEncVideoSource::CroppingTopMargin,       {"-v_clip"}},
    {"video.CroppingRightMargin",   &WMEncVideoSource::CroppingRightMargin,     {"-v_clip"}},
    {"video.CroppingBottomMargin",  &WMEncVideoSource::CroppingBottomMargin,    {"-v_clip"}},
};
constexpr AudienceRow kAudioAudience[] = {
    // property                     value                                       decided by
    {"audience.AudioBitrate",       &WMEncAudience::AudioBitrate,               {"-a_setting", "-profile", "-loadprofile"}},
    {"audience.AudioSamplingRate",  &WMEncAudience::AudioSamplingRate,          {"-a_setting", "-profile", "-loadprofile"}},
    {"audience.AudioChannels",      &WMEncAudience::AudioChannels,              {"-a_setting", "-profile", "-loadprofile"}},
    {"audience.AudioBitsPerSample", &WMEncAudience::AudioBitsPerSample,         {"-a_setting", "-profile", "-loadprofile"}},
    {"audience.AudioBufferMax",     &WMEncAudience::AudioBufferMax,             {"-a_peakbuffer", "-profile", "-loadprofile"}},
    {"audience.AudioPeakBitrate",   &WMEncAudience::AudioPeakBitrate,           {"-a_peakbitrate", "-profile", "-loadprofile"}},
};
constexpr AudienceRow kVideoAudience[] = {
    // property                             value                                     decided by
    {"audience.VideoBitrate",               &WMEncAudience::VideoBitrate,             {"-v_bitrate", "-profile", "-loadprofile"}},
    {"audience.VideoWidth",                 &WMEncAudience::VideoWidth,               {"-v_width", "-profile", "-loadprofile"}},
    {"audience.VideoHeight",                &WMEncAudience::VideoHeight,              {"-v_height", "-profile", "-loadprofile"}},
    {"audience.VideoFPS",                   &WMEncAudience::VideoFPS,                 {"-v_framerate", "-profile", "-loadprofile", "-input"}},
    {"audience.VideoKeyFrameDistance",      &WMEncAudience::VideoKeyFrameDistance,    {"-v_keydist", "-profile", "-loadprofile"}},
    {"audience.VideoBufferSize",            &WMEncAudience::VideoBufferSize,          {"-v_buffer", "-profile", "-loadprofile"}},
    {"audience.VideoImageSharpness",        &WMEncAudience::VideoImageSharpness,      {"-v_quality", "-profile", "-loadprofile"}},
    {"audience.VideoCompressionQuality",    &WMEncAudience::VideoCompressionQuality,  {"-v_quality", "-profile", "-loadprofile"}},
    {"audience.VideoBufferMax",             &WMEncAudience::VideoBufferMax,           {"-v_peakbuffer", "-profile", "-loadprofile"}},
    {"audience.VideoPeakBitrate",           &WMEncAudience::VideoPeakBitrate,         {"-v_peakbitrate", "-profile", "-loadprofile"}},
};
constexpr BroadcastText kPushTexts[] = {
    // property                 value                               decided by
    {"push.ServerName",         &WMEncBroadcast::ServerName,        {"-push"}},
    {"push.PublishingPoint",    &WMEncBroadcast::PublishingPoint,   {"-push"}},
    {"push.Template",           &WMEncBroadcast::Template,          {"-push"}},
};
constexpr DisplayText kDisplayTexts[] = {
    // property             value                            decided by
    {"display.Title",       &WMEncDisplayInfo::Title,        {"-title"}},
    {"display.Author",      &WMEncDisplayInfo::Author,       {"-author"}},
    {"display.Copyright",   &WMEncDisplayInfo::Copyright,    {"-copyright"}},
    {"display.Description", &WMEncDisplayInfo::Description,  {"-description"}},
    {"display.Rating",      &WMEncDisplayInfo::Rating,       {"-rating"}},
};
// clang-format on

constexpr std::int32_t kUsualStillDuration = 10'000;  // milliseconds
constexpr const char* kConformanceTarget = "DeviceConformanceTarget";

class Explainer {
  public:
    Explainer(const platform::SessionState& state, const CommandOrigin& origin,
              platform::OutputPane& pane)
        : state_(state), origin_(origin), pane_(pane) {}

    void Explain() {
        Write("session.ContentType", ContentText(state_.g_nContentType),
              {"-audioonly", "-videoonly", "-profile", "-input"});
        if (state_.g_objSrcAud) AudioSource(*state_.g_objSrcAud);
        if (state_.g_objSrcVid) VideoSource(*state_.g_objSrcVid);
        // The group's copy is what will be encoded by; it alone has the largest packet.
        if (const auto profile = state_.g_objSrcGrp->Profile()) Profile(*profile);
        Output();
        DisplayInformation();
        Write("encoder.VideoPerformance", state_.g_objEncoder->VideoPerformance(),
              {"-v_performance"});
        Write("encoder.AutoStop", state_.g_objEncoder->AutoStop(), {});
    }

  private:
    bool IsCarriedOver(const Deciders& deciders) const {
        for (const std::string_view option : deciders) {
            if (origin_.typed.contains(option)) return false;
            if (Given(origin_.before, option)) return true;
        }
        return !origin_.typed.contains("-wme") && Given(origin_.before, "-wme");
    }

    template <typename Value>
    void Write(std::string_view name, const Value& value, const Deciders& deciders,
               bool kept = false) {
        std::string line = ExplainLine(name, ValueText(value));
        if (kept || IsCarriedOver(deciders)) line += " (carried over)";
        pane_.OutputInfo(line);
    }

    /// A mode that the command would not have found in a new profile.
    template <typename Mode>
    bool IsKept(const platform::WMEncProfile2& profile, Mode&& mode) const {
        return origin_.fresh_profile && mode(*origin_.fresh_profile) != mode(profile);
    }

    void WriteVbrMode(std::string_view name, const platform::WMEncProfile2& profile,
                      SourceType type, const Deciders& deciders) {
        const auto mode = [type](const platform::WMEncProfile2& of) { return of.VBRMode(type, 0); };
        Write(name, ModeText(mode(profile)), deciders, IsKept(profile, mode));
    }

    void WriteFrameMode(std::string_view name, const platform::WMEncProfile2& profile,
                        bool (platform::WMEncProfile2::*property)(int) const,
                        const Deciders& deciders) {
        const auto mode = [property](const platform::WMEncProfile2& of) {
            return (of.*property)(0);
        };
        Write(name, mode(profile), deciders, IsKept(profile, mode));
    }

    /// Unless it is as nobody set it.
    template <typename Value>
    void WriteIfSet(std::string_view name, const Value& value, const Deciders& deciders) {
        if (value != Value{}) Write(name, value, deciders);
    }

    /// The values of one option stand there together.
    void WriteVideoNumbers(const WMEncVideoSource& source) {
        for (const VideoNumber& row : kVideoNumbers) {
            const bool is_set = std::ranges::any_of(kVideoNumbers, [&](const VideoNumber& other) {
                return other.deciders.front() == row.deciders.front() &&
                       (source.*other.value)() != 0;
            });
            if (is_set) Write(row.name, (source.*row.value)(), row.deciders);
        }
    }

    void CommonSource(const std::string& kind, const platform::WMEncSource& source,
                      std::string_view device_option) {
        Write(kind + ".Input", source.Input(), {"-input", device_option, "-profile"});
        WriteIfSet(kind + ".Scheme", source.Scheme(), {device_option, "-profile"});
        if (source.MarkIn() != 0 || source.MarkOut() != 0) {
            Write(kind + ".MarkIn", source.MarkIn(), {"-time"});
            Write(kind + ".MarkOut", source.MarkOut(), {"-time"});
        }
        const bool is_audio = source.Type() == SourceType::Audio;
        const std::int32_t passes = source.PreProcessPass();
        if (passes != 0)
            Write(kind + ".PreProcessPass", passes,
                  {is_audio ? "-a_mode" : "-v_mode", "-profile", "-loadprofile"});
    }

    void AudioSource(const WMEncAudioSource& source) {
        CommonSource("audio", source, "-adevice");
        if (!source.CaptureDevice().empty())
            Write("audio.CaptureDevice", source.CaptureDevice(), {"-adevice", "-profile"});
        WriteIfSet("audio.ContentMode", source.ContentMode(), {"-a_content"});
        WriteIfSet("audio.ContentEDL", source.ContentEDL(), {"-a_contentedl"});
    }

    void VideoSource(const WMEncVideoSource& source) {
        CommonSource("video", source, "-vdevice");
        if (!source.CaptureArea().empty())
            Write("video.CaptureArea", source.CaptureArea(), {"-vdevice", "-profile"});
        if (!source.Scheme().empty())
            Write("video.CaptureRate", source.CaptureRate(), {"-v_framerate", "-profile"});
        if (source.PixelFormat() != 0)
            Write("video.PixelFormat", FormatText(source.PixelFormat()), {"-pixelformat"});
        WriteVideoNumbers(source);
        const std::int32_t still = source.StillDuration();
        if (source.Scheme().empty() && still != 0 && still != kUsualStillDuration)
            Write("video.StillDuration", still, {"-duration"});
    }

    void Profile(platform::WMEncProfile2& profile) {
        Write("profile.ProfileName", profile.ProfileName(), {"-profile", "-loadprofile"});
        WriteIfSet("profile.MinPacketSize", profile.MinPacketSize(), {"-minpacket"});
        WriteIfSet("profile.MaxPacketSize", profile.MaxPacketSize(), {"-maxpacket"});
        if (profile.AudienceCount() == 0) return;
        const auto audience = profile.Audience(0);
        if (state_.g_objSrcAud) AudioStream(profile, *audience);
        if (state_.g_objSrcVid) VideoStream(profile, *audience);
    }

    void AudioStream(platform::WMEncProfile2& profile, WMEncAudience& audience) {
        WriteVbrMode("profile.AudioVBRMode", profile, SourceType::Audio,
                     {"-a_mode", "-profile", "-loadprofile"});
        Write("audience.AudioCodec", profile.EnumAudioCodec(audience.AudioCodec(0)),
              {"-a_codec", "-profile", "-loadprofile"});
        for (const AudienceRow& row : kAudioAudience)
            Write(row.name, (audience.*row.value)(0), row.deciders);
    }

    void VideoStream(platform::WMEncProfile2& profile, WMEncAudience& audience) {
        WriteVbrMode("profile.VideoVBRMode", profile, SourceType::Video,
                     {"-v_mode", "-profile", "-loadprofile"});
        WriteFrameMode("profile.NonSquarePixelMode", profile,
                       &platform::WMEncProfile2::NonSquarePixelMode, {"-pixelratio"});
        WriteFrameMode("profile.InterlaceMode", profile, &platform::WMEncProfile2::InterlaceMode,
                       {"-v_preproc", "-profile"});
        Write("audience.VideoCodec", profile.EnumVideoCodec(audience.VideoCodec(0)),
              {"-v_codec", "-profile", "-loadprofile"});
        for (const AudienceRow& row : kVideoAudience)
            Write(row.name, (audience.*row.value)(0), row.deciders);
        const platform::PropertyValue target =
            audience.Property(SourceType::Video, 0, kConformanceTarget);
        if (const auto* const text = std::get_if<std::string>(&target))
            WriteIfSet("audience." + std::string(kConformanceTarget), *text,
                       {"-v_profile", "-profile"});
    }

    void Output() {
        Write("file.LocalFileName", state_.g_objEncoder->File().LocalFileName(), {"-output"});
        const WMEncBroadcast& broadcast = state_.g_objEncoder->Broadcast();
        WriteIfSet("broadcast.PortNumber", broadcast.PortNumber(platform::BroadcastProtocol::Http),
                   {"-broadcast"});
        for (const BroadcastText& row : kPushTexts)
            if (const std::string text = (broadcast.*row.value)(); !text.empty())
                Write(row.name, text, row.deciders);
    }

    void DisplayInformation() {
        const WMEncDisplayInfo& info = state_.g_objEncoder->DisplayInfo();
        for (const DisplayText& row : kDisplayTexts)
            WriteIfSet(row.name, (info.*row.value)(), row.deciders);
        const platform::WMEncAttributes& attributes = state_.g_objEncoder->Attributes();
        for (int i = 0; i < attributes.Count(); ++i) {
            const auto [name, value] = attributes.Item(i);
            const std::string text =
                std::visit([](const auto& each) { return ValueText(each); }, value);
            Write("attributes." + name, text, {"-a_folddown6to2"});
        }
    }

    const platform::SessionState& state_;
    const CommandOrigin& origin_;
    platform::OutputPane& pane_;
};

}  // namespace

void ExplainSession(const platform::SessionState& state, const CommandOrigin& origin,
                    platform::OutputPane& pane) {
    Explainer(state, origin, pane).Explain();
}

std::string ExplainLine(std::string_view name, std::string_view value) {
    return fmt::format("{} = {}", name, Escaped(value));
}

}  // namespace session
