// The objects that a session is made of: owned by the form, filled by the rooms that set it up.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/encoder.h"
#include "platform/file_system.h"

namespace platform {

struct SessionState {
    std::shared_ptr<WMEncoder> g_objEncoder;  // new at every Go
    std::shared_ptr<FileSystem> g_objFSO;     // new at every Go
    std::shared_ptr<WMEncSourceGroup> g_objSrcGrp;
    std::shared_ptr<WMEncAudioSource> g_objSrcAud;
    std::shared_ptr<WMEncVideoSource> g_objSrcVid;
    std::shared_ptr<WMEncProfile2> g_objProfile;  // kept and reused by later runs
    std::int32_t g_nContentType = 0;              // 1 audio, 16 video, 17 both
    bool g_bCustomProfile = true;                 // never set back to true
    std::string AudioCodecName;                   // display names, for the report
    std::string VideoCodecName;

    /// As every session begins: sources are made for one session only.
    void ClearSources() {
        g_objSrcGrp = nullptr;
        g_objSrcAud = nullptr;
        g_objSrcVid = nullptr;
    }
};

}  // namespace platform
