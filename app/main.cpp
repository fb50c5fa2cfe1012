// The desktop executable: the form in a window, over the engine.
#include "app/main_window.h"
#include "engine/object_model/engine_factory.h"
#include "engine/outputs/asf/repair.h"
#include "engine/sources/screen/screen_parts.h"
#include "engine/sources/sound_meter.h"
#include "platform/host/qt_program.h"

int main(int argc, char** argv) {
    using platform::Factory;
    using platform::FormEvents;
    using platform::FormWindow;
    return platform::host::RunWindow(
        {argv + 1, argv + argc}, {"tessivo", TESSIVO_VERSION, true},
        {engine::MakeEncoder, engine::MakeProfile},
        [](FormWindow& window, Factory& factory) -> std::unique_ptr<FormEvents> {
            return std::make_unique<app::frmMain>(window, factory);
        },
        engine::asf::Repair, engine::FindScreenParts, engine::OpenSoundMeter);
}
