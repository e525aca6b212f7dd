#pragma once

#include <QLoggingCategory>

// One logging category per subsystem; each folder uses its own.
Q_DECLARE_LOGGING_CATEGORY(lcApp)            // zorvane.app: entry, single instance, windows
Q_DECLARE_LOGGING_CATEGORY(lcConfig)         // zorvane.config
Q_DECLARE_LOGGING_CATEGORY(lcPrefs)          // zorvane.prefs
Q_DECLARE_LOGGING_CATEGORY(lcX11)            // zorvane.platform.x11: typing, windows, caret
Q_DECLARE_LOGGING_CATEGORY(lcWayland)        // zorvane.platform.wayland: typing on Wayland
Q_DECLARE_LOGGING_CATEGORY(lcSystem)         // zorvane.platform.system: sleep, autostart, network
Q_DECLARE_LOGGING_CATEGORY(lcDeviceHid)      // zorvane.device.hid
Q_DECLARE_LOGGING_CATEGORY(lcDeviceBle)      // zorvane.device.ble
Q_DECLARE_LOGGING_CATEGORY(lcDevice)         // zorvane.device: record protocol, clicks
Q_DECLARE_LOGGING_CATEGORY(lcAudio)          // zorvane.device.audio
Q_DECLARE_LOGGING_CATEGORY(lcSpeechGateway)  // zorvane.speech.gateway
Q_DECLARE_LOGGING_CATEGORY(lcSpeechIFly)     // zorvane.speech.ifly
Q_DECLARE_LOGGING_CATEGORY(lcHttp)           // zorvane.http
Q_DECLARE_LOGGING_CATEGORY(lcDatabase)       // zorvane.db
Q_DECLARE_LOGGING_CATEGORY(lcInput)          // zorvane.input: voice sessions
Q_DECLARE_LOGGING_CATEGORY(lcConsole)        // zorvane.console
