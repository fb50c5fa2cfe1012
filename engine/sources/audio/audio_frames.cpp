#include "engine/sources/audio/audio_frames.h"

namespace engine {

FrameHandle AudioFrames::New(int count, Ticks pts) {
    const auto size =
        static_cast<std::size_t>(count) * static_cast<std::size_t>(format_.BytesPerSample());
    if (size > buffer_size_) {
        buffer_size_ = size;
        buffers_.reset(CheckAllocated(av_buffer_pool_init(size, nullptr)));
    }
    FrameHandle frame = frames_.Get();
    frame->buf[0] = CheckAllocated(av_buffer_pool_get(buffers_.get()));
    frame->data[0] = frame->buf[0]->data;
    frame->extended_data = frame->data;
    frame->linesize[0] = static_cast<int>(size);
    frame->nb_samples = count;
    frame->format = format_.samples;
    frame->sample_rate = format_.sampling_rate;
    frame->pts = pts.count;
    if (format_.mask == 0 || av_channel_layout_from_mask(&frame->ch_layout, format_.mask) < 0)
        av_channel_layout_default(&frame->ch_layout, format_.channels);
    return frame;
}

FrameHandle AudioFrames::NewSilence(int count, Ticks pts) {
    FrameHandle frame = New(count, pts);
    av_samples_set_silence(frame->extended_data, 0, count, format_.channels, format_.samples);
    return frame;
}

}  // namespace engine
