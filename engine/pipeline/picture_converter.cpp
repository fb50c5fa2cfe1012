#include "engine/pipeline/picture_converter.h"

#include <fmt/format.h>

#include <cmath>
#include <string>
#include <utility>

#include "engine/pipeline/av_error.h"

namespace engine {
namespace {

constexpr const char* kSubject = "Conversion of the picture failed";

bool UsesBt601(AVColorSpace space) {
    return space == AVCOL_SPC_UNSPECIFIED || space == AVCOL_SPC_SMPTE170M ||
           space == AVCOL_SPC_BT470BG;
}

const char* Upright(double turn) {
    const long quarters = std::lround(turn / 90.0) % 4;
    switch ((quarters + 4) % 4) {
        case 1:
            return "transpose=clock,";
        case 2:
            return "hflip,vflip,";
        case 3:
            return "transpose=cclock,";
        default:
            return "";
    }
}

}  // namespace

PictureConverter::PictureConverter(const PictureFormat& format, double turn, FramePool& frames)
    : format_(format), turn_(turn), frames_(frames) {}

bool PictureConverter::Fits(const Shape& shape) const {
    return shape.width == format_.width && shape.height == format_.height &&
           shape.format == format_.pixels && UsesBt601(shape.space) &&
           shape.range != AVCOL_RANGE_JPEG && *Upright(turn_) == '\0';
}

std::string PictureConverter::Chain() const {
    return fmt::format(
        "{}scale=w={}:h={}:flags=bicubic:out_color_matrix=bt601:out_range=tv,format=pix_fmts={}",
        Upright(turn_), format_.width, format_.height, av_get_pix_fmt_name(format_.pixels));
}

void PictureConverter::Build(const Shape& shape) {
    graph_.reset(CheckAllocated(avfilter_graph_alloc()));
    graph_->nb_threads = 1;  // the stages beside this one use the other processors
    const std::string arguments =
        fmt::format("video_size={}x{}:pix_fmt={}:time_base={}/{}:pixel_aspect=1/1", shape.width,
                    shape.height, shape.format, kTicksBase.num, kTicksBase.den);
    CheckAv(avfilter_graph_create_filter(&source_, avfilter_get_by_name("buffer"), "in",
                                         arguments.c_str(), nullptr, graph_.get()),
            kSubject);
    CheckAv(avfilter_graph_create_filter(&sink_, avfilter_get_by_name("buffersink"), "out", nullptr,
                                         nullptr, graph_.get()),
            kSubject);
    const auto end = [](const char* name, AVFilterContext* filter) {
        AVFilterInOut* link = CheckAllocated(avfilter_inout_alloc());
        link->name = av_strdup(name);
        link->filter_ctx = filter;
        return link;
    };
    AVFilterInOut* outputs = end("in", source_);
    AVFilterInOut* inputs = end("out", sink_);
    const int parsed =
        avfilter_graph_parse_ptr(graph_.get(), Chain().c_str(), &inputs, &outputs, nullptr);
    const AvPtr<AVFilterInOut> rest_of_inputs(inputs);
    const AvPtr<AVFilterInOut> rest_of_outputs(outputs);
    CheckAv(parsed, kSubject);
    CheckAv(avfilter_graph_config(graph_.get(), nullptr), kSubject);
}

FrameHandle PictureConverter::Convert(FrameHandle frame) {
    const Shape shape{frame->width, frame->height, frame->format, frame->colorspace,
                      frame->color_range};
    if (shape != shape_) {
        graph_.reset();
        if (!Fits(shape)) Build(shape);
        shape_ = shape;
    }
    if (!graph_) return frame;
    const std::int64_t pts = frame->pts;
    const std::int64_t duration = frame->pkt_duration;
    CheckAv(av_buffersrc_add_frame_flags(source_, frame.get(), AV_BUFFERSRC_FLAG_PUSH), kSubject);
    FrameHandle converted = frames_.Get();
    CheckAv(av_buffersink_get_frame(sink_, converted.get()), kSubject);
    converted->pts = pts;
    converted->pkt_duration = duration;
    return converted;
}

}  // namespace engine
