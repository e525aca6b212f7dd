#pragma once

#include <QString>

// A plain modal box with a title line, as the logic sees it: the feedback's farewell.
class MessageBoxView {
public:
    virtual ~MessageBoxView() = default;

    virtual void setTitle(QString title) = 0;
    virtual void setSubmitHidden(bool hidden) = 0;
    virtual void setCancelHidden(bool hidden) = 0;
    virtual void show() = 0;
    virtual void close() = 0;
};
