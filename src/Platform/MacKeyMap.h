#pragma once

// Stored chords and the key table hold macOS virtual key codes; X11 wants keysyms. This is
// the one translation. Command maps to Control, the key that does its work here.
namespace MacKeyMap {

// The keysym of a macOS virtual key code, or 0 for a code with no counterpart.
unsigned long toKeysym(int macKey);

}  // namespace MacKeyMap
