// The console executable: the form on a terminal, over the engine.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "app/main_window.h"
#include "engine/object_model/engine_factory.h"
#include "engine/outputs/asf/repair.h"
#include "platform/error.h"
#include "platform/host/console_output.h"
#include "platform/host/console_program.h"
#include "platform/host/file_descriptor.h"
#include "platform/host/path_names.h"

namespace {

constexpr int kRefused = 1;
constexpr int kFailed = 2;

/// "--repair FILE". The exit status: 1 when there is nothing to repair FILE from, 2 when the repair
/// itself failed; FILE is then as it was.
int RepairFile(const std::string& name) {
    platform::host::OccupyStandardDescriptors();
    platform::host::ConsoleOutput output(1, 2);
    try {
        output.WriteText(
            engine::asf::Repair(platform::host::PathNames::OfUser().AbsolutePath(name)));
        return output.TextLost() ? kFailed : 0;
    } catch (const platform::Error& error) {
        output.WriteNote("tessivo-console: " + error.description());
        const std::uint32_t number = error.unsigned_number();
        const bool in_writing = number == platform::kDiskFull || number == platform::kUnspecified;
        return in_writing ? kFailed : kRefused;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == "--repair") return RepairFile(argv[2]);
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
