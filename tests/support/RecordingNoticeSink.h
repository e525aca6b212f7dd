#pragma once

#include "Utils/Notice.h"

#include <QStringList>

// Keeps every notice the logic shows.
class RecordingNoticeSink : public NoticeSink {
public:
    QStringList notices;
    void showNotice(const QString& text) override { notices << text; }
};
