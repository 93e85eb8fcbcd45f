#pragma once

#include "ui/PanelFrame.hpp"

#include <string>

namespace tallowen {

// The frame as one compact UTF-8 JSON object for the shells that draw it
// elsewhere: every field under its own name, absent optional values as null,
// roles and kinds by name, tools by raw value, the level by raw value.
std::string panelFrameJson(const PanelFrame& frame);

}  // namespace tallowen
