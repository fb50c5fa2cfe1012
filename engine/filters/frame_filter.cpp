#include "engine/filters/frame_filter.h"

#include <fmt/format.h>

#include "engine/base/av/av_error.h"
#include "engine/base/system/loaded_library.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

namespace engine {
namespace {

// The library brings three dozen others along, and most films need no filter.
class FilterLibrary : public LoadedLibrary {
  public:
    static const FilterLibrary& Loaded() {
        static const FilterLibrary library;
        if (!library.IsComplete())
            throw platform::Error(platform::kUnspecified,
                                  "Cannot load what converts pictures, libavfilter. Install the "
                                  "program again, with the packages that it needs.");
        return library;
    }

    decltype(&avfilter_get_by_name) get_by_name = nullptr;
    decltype(&avfilter_graph_alloc) graph_alloc = nullptr;
    decltype(&avfilter_graph_config) graph_config = nullptr;
    decltype(&avfilter_graph_create_filter) graph_create_filter = nullptr;
    decltype(&avfilter_graph_free) graph_free = nullptr;
    decltype(&avfilter_graph_parse_ptr) graph_parse = nullptr;
    decltype(&avfilter_inout_alloc) inout_alloc = nullptr;
    decltype(&avfilter_inout_free) inout_free = nullptr;
    decltype(&av_buffersink_get_frame) pull = nullptr;
    decltype(&av_buffersink_get_time_base) time_base = nullptr;
    decltype(&av_buffersrc_add_frame_flags) push = nullptr;

  private:
    FilterLibrary() : LoadedLibrary("libavfilter.so." AV_STRINGIFY(LIBAVFILTER_VERSION_MAJOR)) {
        Load(get_by_name, "avfilter_get_by_name");
        Load(graph_alloc, "avfilter_graph_alloc");
        Load(graph_config, "avfilter_graph_config");
        Load(graph_create_filter, "avfilter_graph_create_filter");
        Load(graph_free, "avfilter_graph_free");
        Load(graph_parse, "avfilter_graph_parse_ptr");
        Load(inout_alloc, "avfilter_inout_alloc");
        Load(inout_free, "avfilter_inout_free");
        Load(pull, "av_buffersink_get_frame");
        Load(time_base, "av_buffersink_get_time_base");
        Load(push, "av_buffersrc_add_frame_flags");
    }
};

struct InOutDeleter {
    void operator()(AVFilterInOut* ends) const { FilterLibrary::Loaded().inout_free(&ends); }
};

}  // namespace

void FrameFilter::GraphDeleter::operator()(AVFilterGraph* graph) const {
    FilterLibrary::Loaded().graph_free(&graph);
}

FrameShape ShapeOf(const AVFrame& frame) {
    return {frame.width,       frame.height,          frame.format,   frame.colorspace,
            frame.color_range, frame.color_primaries, frame.color_trc};
}

FrameFilter::FrameFilter(const std::string& chain, const FrameShape& shape, const char* subject)
    : graph_(CheckAllocated(FilterLibrary::Loaded().graph_alloc())), subject_(subject) {
    const FilterLibrary& library = FilterLibrary::Loaded();
    graph_->nb_threads = 1;  // the stages beside this one use the other processors
    const std::string arguments =
        fmt::format("video_size={}x{}:pix_fmt={}:time_base={}/{}:pixel_aspect=1/1", shape.width,
                    shape.height, shape.format, kTicksBase.num, kTicksBase.den);
    CheckAv(library.graph_create_filter(&source_, library.get_by_name("buffer"), "in",
                                        arguments.c_str(), nullptr, graph_.get()),
            subject);
    CheckAv(library.graph_create_filter(&sink_, library.get_by_name("buffersink"), "out", nullptr,
                                        nullptr, graph_.get()),
            subject);
    const auto end = [&](const char* name, AVFilterContext* filter) {
        AVFilterInOut* link = CheckAllocated(library.inout_alloc());
        link->name = av_strdup(name);
        link->filter_ctx = filter;
        return link;
    };
    AVFilterInOut* outputs = end("in", source_);
    AVFilterInOut* inputs = end("out", sink_);
    const int parsed = library.graph_parse(graph_.get(), chain.c_str(), &inputs, &outputs, nullptr);
    const std::unique_ptr<AVFilterInOut, InOutDeleter> rest_of_inputs(inputs);
    const std::unique_ptr<AVFilterInOut, InOutDeleter> rest_of_outputs(outputs);
    CheckAv(parsed, subject);
    CheckAv(library.graph_config(graph_.get(), nullptr), subject);
}

void FrameFilter::Push(AVFrame* frame) {
    CheckAv(FilterLibrary::Loaded().push(source_, frame, AV_BUFFERSRC_FLAG_PUSH), subject_);
}

bool FrameFilter::Pull(AVFrame& frame) {
    const int got = FilterLibrary::Loaded().pull(sink_, &frame);
    if (got == AVERROR(EAGAIN) || got == AVERROR_EOF) return false;
    CheckAv(got, subject_);
    if (frame.pts != AV_NOPTS_VALUE)
        frame.pts = av_rescale_q(frame.pts, FilterLibrary::Loaded().time_base(sink_), kTicksBase);
    return true;
}

}  // namespace engine
