// The capture devices, which the command language knows by number only.
//
// Numbers start at 0 for each of the two kinds and run on across the encoder's source plug-ins in
// their order; a plug-in that captures both kinds counts in both.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/encoder.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"

namespace session {

/// The devices of a kind, each at its number: the names that a source's SetInput takes together
/// with the scheme "device". Errors of the encoder pass through.
std::vector<std::string> DeviceNames(platform::WMEncoder& encoder, platform::SourceType type);

/// Asks the session's encoder, which must be there. Errors of the encoder pass through.
class CaptureDevices {
  public:
    CaptureDevices(const platform::SessionState& state, platform::OutputPane& pane);

    /// Writes the numbered devices of both kinds to the pane.
    void ListDevices();

    /// The name that a source's SetInput takes together with the scheme "device"; "" when no
    /// device of that kind has the number.
    std::string GetDeviceNameFromIndex(platform::SourceType type, std::int32_t number) const;

  private:
    const platform::SessionState& state_;
    platform::OutputPane& pane_;
};

}  // namespace session
