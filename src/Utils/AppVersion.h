#pragma once

// The version of this build, the project's version in CMake: what the backend is told and
// what every update check compares the newest version with.
extern const char kAppVersion[];
