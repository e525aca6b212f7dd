#pragma once

#include <QObject>
#include <QStringList>

class SpeechSynthesisUtils;

// One panel's reading aloud through the synthesis service, which every panel shares: starts
// and stops the panel's reading and tells when the service finished or stopped a piece, and
// whether that ended this panel's reading (another panel's end is none of its business).
class ReadAloud : public QObject {
    Q_OBJECT

public:
    // Whether the process-wide service (used when none is handed in) is reached at once, so
    // that its ends are heard from the start, or only when this reader first needs it.
    enum Reach { ReachNow, ReachWhenUsed };

    // synthesis: the tests' double (not owned); null: the process-wide service.
    explicit ReadAloud(SpeechSynthesisUtils* synthesis, Reach reach = ReachNow, QObject* parent = nullptr);

    bool isReading() const { return mReading; }
    // Stops whatever the service plays and reads the pieces in order with the reader (the
    // service's "per"). False, and nothing stopped, when there is nothing to read.
    bool read(const QStringList& pieces, int reader = 0);
    // The reading was started elsewhere for this panel (the selection's, by the input presenter).
    void markReading() { mReading = true; }
    // Ends this panel's reading and all the service does: the piece playing and those to come.
    void stop();
    // Stops the piece playing, if any; the end that follows tells the rest.
    void stopPlaying();
    // This panel's reading counts as ended, without a word to the service.
    void forget() { mReading = false; }

    // Ends any reading in the program (the text translation switched off).
    static void stopAll();

signals:
    // The service finished or stopped a piece; own: this panel was reading until now.
    void over(bool own);

private:
    SpeechSynthesisUtils* service();
    void onOver();

    SpeechSynthesisUtils* mSynthesis = nullptr;
    bool mReading = false;
};
