#pragma once

#include <QString>

// What the console knows of the device it is walking through the ladder. Zeroed whenever the
// device is lost, so that the next one starts with first replies.
struct DeviceStatus {
    // A boolean setting of the mouse: what it reported and what the user wants.
    struct Setting {
        bool supported = false;
        bool known = false;
        bool status = false;
        bool target = false;
        bool chosen = false;  // the user set the target before the mouse reported
    };
    struct DpiLevel {
        int level000 = 0;  // the level (0 to 2) or resolution (3 or more) the mouse reported
    };

    bool opened = false;     // openDevice() has finished its attempt
    bool connected = false;  // a link came up
    bool ready = false;
    bool dongleIdKnown = false;
    bool remoteIdKnown = false;
    bool mouseActive = false;
    bool moduleKnown = false;     // identified, or given up on: the ladders ask no more
    bool moduleAnswered = false;  // a module reply came: the page knows what the mouse has
    int moduleTries = 0;          // replies whose customer code the backend's list lacks
    QString customerCode;         // the module reply's, once the mouse is identified
    bool lookedUp = false;        // searched for in the backend's list, not taken as saved
    bool activeKnown = false;
    bool levelValuesShown = false;
    bool delayStarted = false;
    int messageTick = 0;
    int levelValueTries = 0;
    bool levelValuesKnown = false;
    int bestCpiValue = 0;
    DpiLevel dpiLevel;
    bool dpiKnown = false;
    int targetDpi = 0;
    Setting lowbatReport;  // always supported
    Setting shake;
    Setting lamplight;
    Setting soundEffect;
    int keyType = 0;
};
