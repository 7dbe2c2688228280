// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/filename.h"

#include "core/platform/path.h"

namespace ravlin {

QString bareName(const QString &path)
{
    QString name = platform::nameOf(path);
    name.chop(ExtensionSize);
    return name;
}

qsizetype characterCount(QStringView name)
{
    qsizetype count = name.size();
    for (qsizetype i = 1; i < name.size(); ++i) {
        if (name[i - 1].isHighSurrogate() && name[i].isLowSurrogate())
            --count;
    }
    return count;
}

bool isLongName(QStringView name)
{
    return name.size() > LongestPlainName && characterCount(name) > LongestPlainName;
}

QString nameAsText(const QString &name)
{
    if (name.isValidUtf16())
        return name;
    constexpr char16_t FirstEscape = 0xDC80;
    constexpr char16_t LastEscape = 0xDCFF;
    constexpr char16_t EscapeOffset = 0xDC00; // from the escape to the byte, which is the Latin-1 character
    QString text = name;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            ++i;
        else if (text[i].unicode() >= FirstEscape && text[i].unicode() <= LastEscape)
            text[i] = QChar(static_cast<char16_t>(text[i].unicode() - EscapeOffset));
        else if (text[i].isSurrogate())
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

} // namespace ravlin
