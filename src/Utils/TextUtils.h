#pragma once

#include <QString>

// Small text operations shared by the presenters.
namespace TextUtils {

// Null or empty.
bool isEmpty(const QString& text);
// Case-sensitive.
bool equals(const QString& a, const QString& b);
// Base64 of the UTF-8 bytes.
QString base64Encode(const QString& text);
// The UTF-8 text of Base64; characters outside the alphabet are skipped.
QString base64Decode(const QString& text);

}  // namespace TextUtils
