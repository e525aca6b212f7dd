#pragma once

#include <QString>

#include <mutex>

// Simplified to Traditional Chinese through OpenCC (phrases included). Without OpenCC's data
// the text comes back unchanged, with one warning.
class ChineseConverter {
public:
    ChineseConverter();
    ~ChineseConverter();
    ChineseConverter(const ChineseConverter&) = delete;
    ChineseConverter& operator=(const ChineseConverter&) = delete;

    QString simplifiedToTraditional(const QString& text);

private:
    std::mutex mMutex;
    void* mHandle = nullptr;  // opencc_t
    bool mTried = false;
};
