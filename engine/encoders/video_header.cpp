#include "engine/encoders/video_header.h"

namespace engine {
namespace {

using platform::VbrMode;

std::uint32_t Unsigned(std::int64_t value) { return static_cast<std::uint32_t>(value); }

}  // namespace

StreamHeader VideoStreamHeader(const VideoPlan& plan) {
    VideoHeader video;
    video.four_cc = plan.codec->four_cc;
    video.width = plan.width;
    video.height = plan.height;
    video.frame_rate_thousandths = Unsigned(CodedFrameRate(plan));
    if (plan.pixel_aspect.numerator > 0 && plan.pixel_aspect.denominator > 0) {
        video.pixel_aspect_x = Unsigned(plan.pixel_aspect.numerator);
        video.pixel_aspect_y = Unsigned(plan.pixel_aspect.denominator);
    }
    StreamHeader header;
    header.format = video;
    header.codec_name = plan.codec_name;
    header.codec_description = plan.codec_description;
    header.variable_rate = plan.mode != VbrMode::Constant;
    header.conformance = plan.conformance;
    header.sparse = plan.input.capture.has_value();
    if (plan.mode == VbrMode::Quality) return header;  // its rate is known once it is written
    header.average_rate_bps = Unsigned(plan.bit_rate_bps);
    header.buffer_ms = Unsigned(plan.buffer_ms);
    if (plan.mode == VbrMode::Peak) {
        header.peak_rate_bps = Unsigned(plan.peak_rate_bps);
        header.peak_buffer_ms = Unsigned(plan.peak_buffer_ms);
    }
    return header;
}

}  // namespace engine
