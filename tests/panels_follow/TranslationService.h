#pragma once

#include "Http/BaiduTranslate.h"
#include "Http/HttpManager.h"
#include "Http/HttpRequest.h"
#include "LocalHttpServer.h"
#include "Platform/WinUtils.h"
#include "RecordingInputBackend.h"
#include "Utils/PreferencesUtils.h"

#include <QFile>
#include <QStandardPaths>
#include <QtTest>

#include <functional>
#include <memory>

// A translation service on loopback answering "Hello", the recording desktop, and preferences
// that start from an empty file: what both panel suites run against.
struct TranslationService {
    static QString path() { return QStringLiteral("/api/trans/vip/translate"); }

    void start()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(server.start());
        http = std::make_unique<HttpManager>(HttpRequest::getInstance(), server.url(), server.url());
        translator =
            std::make_unique<BaiduTranslate>(server.url(), QStringLiteral("app"), QStringLiteral("key"));
        http->setTranslator(translator.get());
        WinUtils::getInstance()->setBackend(&desktop);
    }
    void reset()
    {
        QFile::remove(PreferencesUtils::preferencesPath());
        PreferencesUtils::getInstance()->setUserPreferences(UserPreferences());
        answer(QStringLiteral("Hello"));
        desktop.takeLog();
    }
    void answer(const QString& line)
    {
        server.setAnswer(
            path(), {200, QStringLiteral("{\"from\":\"zh\",\"to\":\"en\",\"trans_result\":[{\"src\":\"x\","
                                         "\"dst\":\"%1\"}]}")
                              .arg(line)
                              .toUtf8()});
    }
    static void setPreferences(const std::function<void(UserPreferences&)>& change)
    {
        UserPreferences record = PreferencesUtils::getInstance()->getUserPreferences();
        change(record);
        PreferencesUtils::getInstance()->setUserPreferences(record);
    }

    LocalHttpServer server;
    std::unique_ptr<HttpManager> http;
    std::unique_ptr<BaiduTranslate> translator;
    RecordingInputBackend desktop;
};
