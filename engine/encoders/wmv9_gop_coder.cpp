#include "engine/encoders/wmv9_gop_coder.h"

#include <fmt/format.h>

#include <algorithm>
#include <thread>

#include "engine/encoders/video_rate.h"
#include "platform/error.h"

namespace engine {
namespace {

namespace wmv9 = codecs::wmv9;

constexpr std::int32_t kLargestSide = 8192;
// The level of performance from which there are B pictures.
constexpr std::int32_t kBPicturesFrom = 10;
constexpr int kMostBPictures = 2;  // in a row

wmv9::PictureView View(const AVFrame& frame) {
    return {{frame.data[0], frame.data[1], frame.data[2]},
            {frame.linesize[0], frame.linesize[1], frame.linesize[2]}};
}

std::vector<wmv9::PictureView> Views(std::span<const AVFrame* const> frames) {
    std::vector<wmv9::PictureView> views;
    for (const AVFrame* frame : frames) views.push_back(View(*frame));
    return views;
}

wmv9::PictureRequest Request(const PictureRequest& request,
                             std::span<const wmv9::PictureView> beside) {
    return {request.kind,     request.quantiser, request.b_index, request.b_count,
            request.may_be_i, request.index,     beside,          request.first_beside};
}

int BPicturesFor(const VideoPlan& plan) {
    return plan.input.capture || plan.simple_profile || plan.performance < kBPicturesFrom
               ? 0
               : kMostBPictures;
}

}  // namespace

wmv9::EncoderSettings Wmv9Settings(const VideoPlan& plan) {
    if (plan.width > kLargestSide || plan.height > kLargestSide)
        throw platform::Error(platform::kInvalidArgument,
                              fmt::format("{} at {}x{} is too large: give -v_width and -v_height "
                                          "up to {}",
                                          plan.codec->name, plan.width, plan.height, kLargestSide));
    wmv9::EncoderSettings settings;
    settings.width = plan.width;
    settings.height = plan.height;
    settings.profile = plan.simple_profile ? wmv9::Profile::Simple : wmv9::Profile::Main;
    settings.adaptive = !plan.simple_profile;
    settings.preset = std::clamp(plan.performance, 0, 100);
    settings.b_pictures = BPicturesFor(plan);
    settings.pictures_per_second = CodedFrameRate(plan) / 1000.0;
    settings.rate_bps = plan.bit_rate_bps;
    if (CodesRows(plan))
        settings.threads =
            plan.encoder_threads > 0
                ? plan.encoder_threads
                : static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    return settings;
}

CodedPicture Wmv9GopCoder::Encode(AVFrame& frame, const PictureRequest& request) {
    return Packed(encoder_.Encode(View(frame), Request(request, Views(request.beside))));
}

CodedPicture Wmv9GopCoder::Recode(AVFrame& frame, const PictureRequest& request) {
    return Packed(encoder_.Recode(View(frame), Request(request, Views(request.beside))));
}

CodedPicture Wmv9GopCoder::Packed(const wmv9::CodedPicture& coded) {
    CodedPicture picture;
    picture.bytes = packets_.Copy(coded.data);
    picture.key = coded.kind == codecs::PictureKind::kI;
    picture.bits = coded.bits;
    return picture;
}

int Wmv9GopCoder::ChooseBPictures(std::span<const AVFrame* const> next, int first) {
    const std::size_t count = std::min<std::size_t>(next.size(), wmv9::kTriedPictures);
    return encoder_.ChooseBPictures(Views(next.first(count)), first);
}

std::optional<double> Wmv9GopCoder::LookAhead(const AVFrame& frame) {
    return encoder_.LookAhead(View(frame));
}

std::vector<std::uint8_t> Wmv9GopCoder::ExtraData() const {
    const auto header = encoder_.SequenceHeader();
    return {header.begin(), header.end()};
}

}  // namespace engine
