// A media library of another version: all behind its version differs.
#include "engine/media/media_parts.h"

extern "C" const char* const tessivo_media_parts;
const char* const tessivo_media_parts = "0.0.1";

static_assert(offsetof(engine::MediaParts, version) == 0);
