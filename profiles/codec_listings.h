// The listings of the encoder's codecs and audio formats in the output pane.
#pragma once

#include "platform/factory.h"
#include "platform/output_pane.h"

namespace profiles {

/// Each asks a fresh profile, mode by mode. An error of the encoder ends the listing and goes to
/// the caller as platform::Error.
void ListAudioCodecs(platform::Factory& factory, platform::OutputPane& pane);
void ListVideoCodecs(platform::Factory& factory, platform::OutputPane& pane);
/// Every format as the argument that "-a_setting" takes for it.
void ListAudioFormats(platform::Factory& factory, platform::OutputPane& pane);

}  // namespace profiles
