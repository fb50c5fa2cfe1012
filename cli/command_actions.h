// What the parser sets off above its own room: the form wires it to listings, help and folders.
#pragma once

#include <string>

namespace cli {

/// User-interface thread. Errors (platform::Error) pass through the parser to its caller.
class CommandActions {
  public:
    virtual ~CommandActions() = default;

    virtual void ListDevices() = 0;
    virtual void ListAudioCodecs() = 0;
    virtual void ListAudioFormats() = 0;
    virtual void ListVideoCodecs() = 0;
    virtual void ShowHelp() = 0;
    virtual void ShowHelpChm() = 0;
    virtual void PrintFileInfo() = 0;  // of the `input` setting

    /// Makes the folder with the parents that are missing; one that exists is left as it is.
    /// Throws Error when it cannot be made.
    virtual void CreateOutputFolder(const std::string& path) = 0;
};

}  // namespace cli
