#include "engine/sources/files/kept_media.h"

#include <mutex>
#include <utility>

namespace engine {
namespace {

struct Kept {
    std::mutex mutex;
    std::string path;
    std::optional<OpenMedia> media;
};

Kept& TheKept() {
    static Kept kept;
    return kept;
}

}  // namespace

void KeepMedia(const std::string& path, OpenMedia media) {
    Kept& kept = TheKept();
    std::optional<OpenMedia> before;  // is closed without the lock
    const std::lock_guard lock(kept.mutex);
    before = std::move(kept.media);
    kept.path = path;
    kept.media = std::move(media);
}

std::optional<OpenMedia> TakeKeptMedia(const std::string& path) {
    Kept& kept = TheKept();
    std::optional<OpenMedia> media;
    {
        const std::lock_guard lock(kept.mutex);
        if (!kept.media || kept.path != path) return {};
        media = std::exchange(kept.media, {});
    }
    const std::optional<FileState> now = FileStateOf(path);
    if (!now || now != media->state) return {};
    return media;
}

}  // namespace engine
