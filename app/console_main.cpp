// The console executable: the form on a terminal, over the engine.
#include "app/main_window.h"
#include "engine/object_model/engine_factory.h"
#include "platform/host/console_program.h"

int main(int argc, char** argv) {
    using platform::Factory;
    using platform::FormEvents;
    using platform::FormWindow;
    return platform::host::RunConsole(
        {argv + 1, argv + argc}, {"tessivo-console", TESSIVO_VERSION, false},
        {engine::MakeEncoder, engine::MakeProfile},
        [](FormWindow& window, Factory& factory) -> std::unique_ptr<FormEvents> {
            return std::make_unique<app::frmMain>(window, factory);
        });
}
