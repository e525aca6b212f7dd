#pragma once

#include <QObject>

// The delete question as its presenter sees it.
class DeletePopupView {
public:
    virtual ~DeletePopupView() = default;

    virtual void accept() = 0;
    virtual void reject() = 0;
};

// Ends the delete question: submit deletes, cancel keeps the words.
class DeletePopupPresenter : public QObject {
    Q_OBJECT

public:
    explicit DeletePopupPresenter(DeletePopupView* view, QObject* parent = nullptr)
        : QObject(parent), mView(view)
    {
    }

public slots:
    void submit() { mView->accept(); }
    void cancel() { mView->reject(); }

private:
    DeletePopupView* mView;
};
