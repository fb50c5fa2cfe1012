#include "engine/sources/camera/camera_frames.h"

#include <linux/videodev2.h>

#include <array>
#include <cstring>
#include <utility>

#include "engine/base/av/av_error.h"
#include "engine/sources/camera/camera_format.h"

namespace engine {
namespace {

// Bytes in memory that is used again, with the room behind them that decoders and scalers want.
class KeptBytes {
  public:
    AvPtr<AVBufferRef> Copy(std::span<const std::uint8_t> bytes) {
        if (bytes.size() > most_) {
            most_ = bytes.size();
            pool_.reset(
                CheckAllocated(av_buffer_pool_init(most_ + AV_INPUT_BUFFER_PADDING_SIZE, nullptr)));
        }
        AvPtr<AVBufferRef> copy(CheckAllocated(av_buffer_pool_get(pool_.get())));
        std::memcpy(copy->data, bytes.data(), bytes.size());
        std::memset(copy->data + bytes.size(), 0, AV_INPUT_BUFFER_PADDING_SIZE);
        return copy;
    }

  private:
    AvPtr<AVBufferPool> pool_;
    std::size_t most_ = 0;
};

AVColorSpace ColoursOf(const v4l2_pix_format& layout) {
    std::uint32_t coding = layout.ycbcr_enc;
    if (coding == V4L2_YCBCR_ENC_DEFAULT) coding = V4L2_MAP_YCBCR_ENC_DEFAULT(layout.colorspace);
    switch (coding) {
        case V4L2_YCBCR_ENC_709:
        case V4L2_YCBCR_ENC_XV709:
            return AVCOL_SPC_BT709;
        case V4L2_YCBCR_ENC_BT2020:
            return AVCOL_SPC_BT2020_NCL;
        case V4L2_YCBCR_ENC_SMPTE240M:
            return AVCOL_SPC_SMPTE240M;
        default:
            return AVCOL_SPC_SMPTE170M;
    }
}

bool HasFullRange(const v4l2_pix_format& layout) {
    if (layout.quantization != V4L2_QUANTIZATION_DEFAULT)
        return layout.quantization == V4L2_QUANTIZATION_FULL_RANGE;
    return layout.colorspace == V4L2_COLORSPACE_JPEG;
}

class RawFrameMaker : public CameraFrameMaker {
  public:
    RawFrameMaker(const v4l2_pix_format& layout, const CameraPixelRow& pixels, FramePool& frames)
        : layout_(layout),
          swapped_(pixels.swapped),
          format_(av_get_pix_fmt(pixels.av_name)),
          frames_(frames) {
        FindPlanes();
    }

    FrameHandle Make(std::span<const std::uint8_t> bytes) override {
        if (bytes.size() < frame_bytes_) return {};
        FrameHandle frame = frames_.Get();
        frame->buf[0] = memory_.Copy(bytes.first(frame_bytes_)).release();
        for (std::size_t i = 0; i < planes_.size() && planes_[i].stride > 0; ++i) {
            frame->data[i] = frame->buf[0]->data + planes_[i].begin;
            frame->linesize[i] = planes_[i].stride;
        }
        frame->format = format_;
        frame->width = static_cast<int>(layout_.width);
        frame->height = static_cast<int>(layout_.height);
        SetColours(*frame);
        SetFields(*frame);
        return frame;
    }

  private:
    struct Plane {
        std::ptrdiff_t begin = 0;
        int stride = 0;  // 0 = there is no such plane
    };

    // Planes follow each other; the stride of those with colours follows from the first one's.
    void FindPlanes() {
        const AVPixFmtDescriptor& about = *av_pix_fmt_desc_get(format_);
        const int width = static_cast<int>(layout_.width);
        const int height = static_cast<int>(layout_.height);
        int stride = static_cast<int>(layout_.bytesperline);
        if (stride == 0) stride = av_image_get_linesize(format_, width, 0);
        const int count = av_pix_fmt_count_planes(format_);
        std::ptrdiff_t begin = 0;
        for (int i = 0; i < count; ++i) {
            const int step = about.comp[i].step;  // 2 where both colours share a plane
            Plane plane = {begin, i == 0 ? stride : (stride * step) >> about.log2_chroma_w};
            const int rows = i == 0 ? height : AV_CEIL_RSHIFT(height, about.log2_chroma_h);
            begin += std::ptrdiff_t{plane.stride} * rows;
            planes_[static_cast<std::size_t>(i)] = plane;
        }
        if (swapped_) std::swap(planes_[1], planes_[2]);
        frame_bytes_ = static_cast<std::size_t>(begin);
    }

    void SetColours(AVFrame& frame) const {
        if ((av_pix_fmt_desc_get(format_)->flags & AV_PIX_FMT_FLAG_RGB) != 0) return;
        frame.colorspace = ColoursOf(layout_);
        frame.color_range = HasFullRange(layout_) ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    }

    void SetFields(AVFrame& frame) const {
        frame.interlaced_frame = layout_.field == V4L2_FIELD_INTERLACED ||
                                         layout_.field == V4L2_FIELD_INTERLACED_TB ||
                                         layout_.field == V4L2_FIELD_INTERLACED_BT
                                     ? 1
                                     : 0;
        frame.top_field_first = layout_.field == V4L2_FIELD_INTERLACED_BT ? 0 : 1;
    }

    const v4l2_pix_format layout_;
    const bool swapped_;
    const AVPixelFormat format_;
    FramePool& frames_;
    std::array<Plane, 4> planes_;
    std::size_t frame_bytes_ = 0;
    KeptBytes memory_;
};

class JpegFrameMaker : public CameraFrameMaker {
  public:
    explicit JpegFrameMaker(FramePool& frames) : frames_(frames) {
        const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_MJPEG);
        if (codec == nullptr) throw AvError(AVERROR_DECODER_NOT_FOUND, "JPEG pictures");
        decoder_.reset(CheckAllocated(avcodec_alloc_context3(codec)));
        decoder_->thread_count = 1;  // several would hold frames back
        decoder_->err_recognition = AV_EF_EXPLODE;
        CheckAv(avcodec_open2(decoder_.get(), codec, nullptr), "JPEG pictures");
        packet_.reset(CheckAllocated(av_packet_alloc()));
    }

    FrameHandle Make(std::span<const std::uint8_t> bytes) override {
        FrameHandle decoded;
        if (!bytes.empty()) decoded = Decode(bytes);
        if (decoded)
            broken_ = 0;
        else if (++broken_ == kForgiven)
            decoder_->err_recognition = 0;
        return decoded;
    }

  private:
    // Half a second of nothing but broken frames: that is how this camera writes them.
    static constexpr int kForgiven = 15;

    FrameHandle Decode(std::span<const std::uint8_t> bytes) {
        packet_->buf = memory_.Copy(bytes).release();
        packet_->data = packet_->buf->data;
        packet_->size = static_cast<int>(bytes.size());
        avcodec_send_packet(decoder_.get(), packet_.get());
        av_packet_unref(packet_.get());
        FrameHandle decoded;
        for (FrameHandle next = frames_.Get();
             avcodec_receive_frame(decoder_.get(), next.get()) >= 0; next = frames_.Get())
            decoded = std::move(next);
        if (decoded) SetColours(*decoded);
        return decoded;
    }

    // The range is said beside the format, as for all other frames.
    static void SetColours(AVFrame& frame) {
        struct Row {
            AVPixelFormat full_range, format;
        };
        constexpr Row kFormats[] = {
            {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUV420P},
            {AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUV422P},
            {AV_PIX_FMT_YUVJ444P, AV_PIX_FMT_YUV444P},
            {AV_PIX_FMT_YUVJ440P, AV_PIX_FMT_YUV440P},
        };
        for (const Row& row : kFormats) {
            if (frame.format != row.full_range) continue;
            frame.format = row.format;
            frame.color_range = AVCOL_RANGE_JPEG;
        }
    }

    FramePool& frames_;
    AvPtr<AVCodecContext> decoder_;
    AvPtr<AVPacket> packet_;
    KeptBytes memory_;
    int broken_ = 0;  // one after the other
};

}  // namespace

std::unique_ptr<CameraFrameMaker> MakeCameraFrameMaker(const v4l2_pix_format& layout,
                                                       FramePool& frames) {
    const CameraPixelRow* pixels = FindCameraPixels(layout.pixelformat);
    if (pixels == nullptr) throw platform::Error(platform::kInvalidData, "Unknown camera pixels");
    if (pixels->kind == CameraPixelRow::Kind::Jpeg) return std::make_unique<JpegFrameMaker>(frames);
    return std::make_unique<RawFrameMaker>(layout, *pixels, frames);
}

}  // namespace engine
