// What a host calls on the form. User-interface thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

inline constexpr std::int16_t kEnterKey = 13;

class FormEvents {
  public:
    virtual ~FormEvents() = default;

    virtual void Form_Load() = 0;
    virtual void Form_Unload() = 0;
    virtual void cmdGo_Click() = 0;
    virtual void cmdStop_Click() = 0;
    virtual void txtCmd_KeyPress(std::int16_t key) = 0;
    virtual void Timer1_Timer() = 0;

    /// Go with words that are split already (a shell's arguments; one word is enough).
    virtual void RunCommand(const std::vector<std::string>& words) = 0;
    /// Whether an encoder runs or a folder is being walked.
    virtual bool IsBusy() const = 0;
    /// How the last command ended: 0 done, listed or shown; 1 refused while parsing or setting up;
    /// 2 failed while running (of a folder: any of its files).
    virtual int ExitStatus() const = 0;
};

}  // namespace platform
