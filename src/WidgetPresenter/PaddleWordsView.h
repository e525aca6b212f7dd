#pragma once

// The selection toolbar as its presenter sees it: the presenter only keeps the record that
// the toolbar reads, so nothing is asked of the window yet.
class PaddleWordsView {
public:
    virtual ~PaddleWordsView() = default;
};
