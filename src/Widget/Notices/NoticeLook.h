#pragma once

// The picture resources of the notices live in the widgets library and need registering once.
namespace NoticeLook {
void loadArt();
}  // namespace NoticeLook
