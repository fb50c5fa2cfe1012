// FFmpeg's headers and the owners of its objects: the one place that knows how each is freed.
#pragma once

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "engine/base/ticks.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswresample/swresample.h>
}

namespace engine {

inline constexpr AVRational kTicksBase{1, static_cast<int>(Ticks::kPerSecond)};

struct AvDeleter {
    void operator()(AVFormatContext* p) const { avformat_close_input(&p); }
    void operator()(AVCodecContext* p) const { avcodec_free_context(&p); }
    void operator()(AVFrame* p) const { av_frame_free(&p); }
    void operator()(AVPacket* p) const { av_packet_free(&p); }
    void operator()(SwrContext* p) const { swr_free(&p); }
    void operator()(AVBufferRef* p) const { av_buffer_unref(&p); }
    void operator()(AVBufferPool* p) const { av_buffer_pool_uninit(&p); }
    void operator()(AVDictionary* p) const { av_dict_free(&p); }
};

template <typename T>
using AvPtr = std::unique_ptr<T, AvDeleter>;

/// Frame and packet shells that are used again: what they refer to is released when one comes back,
/// the shell itself is kept. Handles may be passed between threads and must not outlive the pool.
template <typename T>
class ShellPool {
  public:
    struct Return {
        ShellPool* pool = nullptr;
        void operator()(T* shell) const { pool->Put(shell); }
    };
    using Handle = std::unique_ptr<T, Return>;

    Handle Get() {
        {
            const std::lock_guard lock(mutex_);
            if (!idle_.empty()) {
                Handle shell(idle_.back().release(), Return{this});
                idle_.pop_back();
                return shell;
            }
        }
        return Handle(New(), Return{this});
    }

  private:
    static T* New();
    static void Release(T* shell);

    void Put(T* shell) {
        Release(shell);
        const std::lock_guard lock(mutex_);
        idle_.emplace_back(shell);
    }

    std::mutex mutex_;
    std::vector<AvPtr<T>> idle_;
};

template <typename T>
T* CheckAllocated(T* object) {
    if (object == nullptr) throw std::bad_alloc();
    return object;
}

template <>
inline AVFrame* ShellPool<AVFrame>::New() {
    return CheckAllocated(av_frame_alloc());
}
template <>
inline void ShellPool<AVFrame>::Release(AVFrame* shell) {
    av_frame_unref(shell);
}
template <>
inline AVPacket* ShellPool<AVPacket>::New() {
    return CheckAllocated(av_packet_alloc());
}
template <>
inline void ShellPool<AVPacket>::Release(AVPacket* shell) {
    av_packet_unref(shell);
}

using FramePool = ShellPool<AVFrame>;
using PacketPool = ShellPool<AVPacket>;
using FrameHandle = FramePool::Handle;
using PacketHandle = PacketPool::Handle;

}  // namespace engine
