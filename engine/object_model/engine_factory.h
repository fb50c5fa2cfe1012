// Makes the engine's objects for a host.
#pragma once

#include <memory>

#include "platform/encoder.h"
#include "platform/event_loop.h"
#include "platform/file_system.h"

namespace engine {

/// An encoder whose events go through `loop`, which must outlive it. Names of files are read with
/// `files`.
std::shared_ptr<platform::WMEncoder> MakeEncoder(platform::EventLoop& loop,
                                                 std::shared_ptr<platform::FileSystem> files);

/// An empty profile, for the source groups of any encoder of this engine. Profile files are read
/// and written with `files`.
std::shared_ptr<platform::WMEncProfile2> MakeProfile(std::shared_ptr<platform::FileSystem> files);

}  // namespace engine
