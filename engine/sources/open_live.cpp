#include "engine/sources/open_live.h"

#include "engine/sources/audio/alsa_audio.h"
#include "engine/sources/audio/pulse_audio.h"
#include "engine/sources/camera/v4l2_camera.h"
#include "engine/sources/screen/portal_screen.h"
#include "engine/sources/screen/x11_screen.h"
#include "platform/error.h"

namespace engine {

std::unique_ptr<LiveSource> OpenLiveSource(const CapturePlan& plan, FramePool& frames) {
    switch (plan.kind) {
        case DeviceKind::Screen:
            if (plan.share) return OpenPortalScreen(plan.share, frames);
            return OpenX11Screen(plan.area, plan.rate, frames);
        case DeviceKind::PulseSource:
            return OpenPulseAudio(plan.id, frames);
        case DeviceKind::AlsaCapture:
            return OpenAlsaAudio(plan.id, frames);
        case DeviceKind::Camera:
            return OpenV4l2Camera(plan.id, plan.name, plan.camera, frames);
    }
    throw platform::Error(platform::kNotImplemented, plan.name + " cannot be recorded");
}

}  // namespace engine
