#pragma once

#include "Utils/Singleton.h"
#include "Widget/Common/FramelessDialog.h"

class QLabel;

// The product, its version and a link to its web site.
class AboutUsDialog : public FramelessDialog, public Singleton<AboutUsDialog> {
    Q_OBJECT

public:
    explicit AboutUsDialog(QWidget* parent = nullptr);

    void setAppVersion(const QString& version);
    QString versionText() const;

private:
    QLabel* mVersion;
};
