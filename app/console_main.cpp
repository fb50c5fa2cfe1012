// The console executable: the form on a terminal, over the engine.
#include <memory>
#include <string>
#include <vector>

#include "app/main_window.h"
#include "engine/object_model/engine_factory.h"
#include "engine/outputs/asf/repair.h"
#include "platform/host/console_program.h"
#include "platform/host/console_repair.h"

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (const auto repaired = platform::host::RunRepair(words, engine::asf::Repair))
        return *repaired;
    using platform::Factory;
    using platform::FormEvents;
    using platform::FormWindow;
    return platform::host::RunConsole(
        words, {"tessivo-console", TESSIVO_VERSION, false},
        {engine::MakeEncoder, engine::MakeProfile},
        [](FormWindow& window, Factory& factory) -> std::unique_ptr<FormEvents> {
            return std::make_unique<app::frmMain>(window, factory);
        });
}
