// The example configuration schema (examples/network_device.sql), compiled
// into the tool from bundled_schema.cc.in by CMake, so that the tool has a
// configuration database to work with wherever it runs.
#pragma once

namespace SysEventTool {

extern const char* const BUNDLED_SCHEMA;

}  // namespace SysEventTool
