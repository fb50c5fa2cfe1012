// A pane for what is set up aside and tells nobody.
#pragma once

#include <string>

#include "platform/output_pane.h"

namespace session {

class NoPane final : public platform::OutputPane {
  public:
    void OutputInfo(const std::string& /*text*/) override {}
};

}  // namespace session
