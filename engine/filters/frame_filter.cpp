#include "engine/filters/frame_filter.h"

#include <fmt/format.h>

#include "engine/base/av/av_error.h"

namespace engine {

FrameShape ShapeOf(const AVFrame& frame) {
    return {frame.width,       frame.height,          frame.format,   frame.colorspace,
            frame.color_range, frame.color_primaries, frame.color_trc};
}

FrameFilter::FrameFilter(const std::string& chain, const FrameShape& shape, const char* subject)
    : graph_(CheckAllocated(avfilter_graph_alloc())), subject_(subject) {
    graph_->nb_threads = 1;  // the stages beside this one use the other processors
    const std::string arguments =
        fmt::format("video_size={}x{}:pix_fmt={}:time_base={}/{}:pixel_aspect=1/1", shape.width,
                    shape.height, shape.format, kTicksBase.num, kTicksBase.den);
    CheckAv(avfilter_graph_create_filter(&source_, avfilter_get_by_name("buffer"), "in",
                                         arguments.c_str(), nullptr, graph_.get()),
            subject);
    CheckAv(avfilter_graph_create_filter(&sink_, avfilter_get_by_name("buffersink"), "out", nullptr,
                                         nullptr, graph_.get()),
            subject);
    const auto end = [](const char* name, AVFilterContext* filter) {
        AVFilterInOut* link = CheckAllocated(avfilter_inout_alloc());
        link->name = av_strdup(name);
        link->filter_ctx = filter;
        return link;
    };
    AVFilterInOut* outputs = end("in", source_);
    AVFilterInOut* inputs = end("out", sink_);
    const int parsed =
        avfilter_graph_parse_ptr(graph_.get(), chain.c_str(), &inputs, &outputs, nullptr);
    const AvPtr<AVFilterInOut> rest_of_inputs(inputs);
    const AvPtr<AVFilterInOut> rest_of_outputs(outputs);
    CheckAv(parsed, subject);
    CheckAv(avfilter_graph_config(graph_.get(), nullptr), subject);
}

void FrameFilter::Push(AVFrame* frame) {
    CheckAv(av_buffersrc_add_frame_flags(source_, frame, AV_BUFFERSRC_FLAG_PUSH), subject_);
}

bool FrameFilter::Pull(AVFrame& frame) {
    const int got = av_buffersink_get_frame(sink_, &frame);
    if (got == AVERROR(EAGAIN) || got == AVERROR_EOF) return false;
    CheckAv(got, subject_);
    if (frame.pts != AV_NOPTS_VALUE)
        frame.pts = av_rescale_q(frame.pts, av_buffersink_get_time_base(sink_), kTicksBase);
    return true;
}

}  // namespace engine
