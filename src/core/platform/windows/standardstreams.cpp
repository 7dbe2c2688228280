// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/standardstreams.h"

#include "core/platform/windows/native.h"

#include <algorithm>
#include <array>

#include <shellapi.h>

namespace ravlin::platform {
namespace {

HANDLE handleOf(StandardStream stream)
{
    return ::GetStdHandle(stream == StandardStream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

struct Range
{
    char32_t first = 0;
    char32_t last = 0;
};

/// Wide and full-width characters of Unicode's East Asian Width (UAX #11), and emoji, in blocks.
constexpr std::array WideRanges{Range{0x1100, 0x115F}, Range{0x231A, 0x231B}, Range{0x23E9, 0x23EC},
    Range{0x2614, 0x2615}, Range{0x2648, 0x2653}, Range{0x26AA, 0x26AB}, Range{0x26BD, 0x26BE}, Range{0x2705, 0x2705},
    Range{0x270A, 0x270B}, Range{0x2728, 0x2728}, Range{0x2753, 0x2755}, Range{0x2795, 0x2797}, Range{0x2B1B, 0x2B1C},
    Range{0x2E80, 0x303E}, Range{0x3041, 0x33FF}, Range{0x3400, 0x4DBF}, Range{0x4E00, 0x9FFF}, Range{0xA000, 0xA4C6},
    Range{0xA960, 0xA97C}, Range{0xAC00, 0xD7A3}, Range{0xF900, 0xFAFF}, Range{0xFE10, 0xFE19}, Range{0xFE30, 0xFE6B},
    Range{0xFF01, 0xFF60}, Range{0xFFE0, 0xFFE6}, Range{0x16FE0, 0x18CFF}, Range{0x1AFF0, 0x1B2FB},
    Range{0x1F004, 0x1F004}, Range{0x1F0CF, 0x1F0CF}, Range{0x1F18E, 0x1F18E}, Range{0x1F191, 0x1F19A},
    Range{0x1F200, 0x1F320}, Range{0x1F32D, 0x1F335}, Range{0x1F337, 0x1F37C}, Range{0x1F37E, 0x1F393},
    Range{0x1F3A0, 0x1F3CA}, Range{0x1F3CF, 0x1F3D3}, Range{0x1F3E0, 0x1F3F0}, Range{0x1F3F4, 0x1F3F4},
    Range{0x1F3F8, 0x1F43E}, Range{0x1F440, 0x1F440}, Range{0x1F442, 0x1F4FC}, Range{0x1F4FF, 0x1F53D},
    Range{0x1F54B, 0x1F54E}, Range{0x1F550, 0x1F567}, Range{0x1F595, 0x1F596}, Range{0x1F5FB, 0x1F64F},
    Range{0x1F680, 0x1F6C5}, Range{0x1F6CC, 0x1F6CC}, Range{0x1F6D0, 0x1F6D7}, Range{0x1F6DC, 0x1F6DF},
    Range{0x1F6EB, 0x1F6EC}, Range{0x1F6F4, 0x1F6FC}, Range{0x1F7E0, 0x1F7F0}, Range{0x1F90C, 0x1F93A},
    Range{0x1F93C, 0x1F945}, Range{0x1F947, 0x1F9FF}, Range{0x1FA70, 0x1FAFF}, Range{0x20000, 0x3FFFD}};

bool isWide(char32_t character)
{
    const auto *const found = std::lower_bound(WideRanges.begin(), WideRanges.end(), character,
        [](const Range &range, char32_t wanted) { return range.last < wanted; });
    return found != WideRanges.end() && found->first <= character;
}

/// Writes to a console, which takes UTF-16 whatever its code page is.
bool writeToConsole(HANDLE console, QByteArrayView bytes)
{
    constexpr qsizetype MostUnits = 8 * 1024; // older consoles refuse more at once
    const QString text = QString::fromUtf8(bytes);
    for (qsizetype done = 0; done < text.size();) {
        qsizetype length = std::min(MostUnits, text.size() - done);
        if (done + length < text.size() && text.at(done + length - 1).isHighSurrogate())
            --length;
        DWORD written = 0;
        if (!::WriteConsoleW(console, text.utf16() + done, static_cast<DWORD>(length), &written, nullptr))
            return false;
        done += length;
    }
    return true;
}

} // namespace

void restrictLibrarySearch()
{
    // The program's folder holds its libraries and Qt's plugins. A failure leaves the usual search, which is no reason
    // not to start.
    ::SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    ::SetDllDirectoryW(L"");
}

QStringList programArguments(int, char **)
{
    // What main() gets is in the code page, which lacks characters of some names.
    int count = 0;
    wchar_t **const found = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    QStringList arguments;
    for (int i = 1; found != nullptr && i < count; ++i)
        arguments += fromWide(found[i]);
    ::LocalFree(static_cast<void *>(found));
    return arguments;
}

std::optional<QString> commandLineText(int, char **)
{
    QString text = fromWide(::GetCommandLineW());
    // The program's name ends at the first blank outside quotes.
    qsizetype end = 0;
    for (bool isQuoted = false; end < text.size() && (isQuoted || !text.at(end).isSpace()); ++end)
        isQuoted = text.at(end) == u'"' ? !isQuoted : isQuoted;
    text = text.mid(end).trimmed();
    const bool isOneQuoted = text.size() > 1 && text.startsWith(u'"') && text.indexOf(u'"', 1) == text.size() - 1;
    return isOneQuoted ? text.mid(1, text.size() - 2) : text;
}

void prepareStandardStreams()
{
    // Nothing to do: handles have no numbers that could be reused, and no signal ends the program.
}

void outliveFileSizeLimit()
{
    // Nothing to do: no signal ends the program.
}

bool hasStream(StandardStream stream)
{
    return ::GetFileType(handleOf(stream)) != FILE_TYPE_UNKNOWN;
}

bool isTerminal(StandardStream stream)
{
    DWORD mode = 0;
    return ::GetConsoleMode(handleOf(stream), &mode) != 0;
}

int displayWidth(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return character == 0 ? 0 : -1;
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
        return 0;
    case QChar::Other_Format:
        return character == QChar::SoftHyphen ? 1 : 0;
    default:
        return isWide(character) ? 2 : 1;
    }
}

Result<bool> writeTo(StandardStream stream, QByteArrayView bytes)
{
    HANDLE handle = handleOf(stream);
    bool isWritten = true;
    if (isTerminal(stream)) {
        isWritten = writeToConsole(handle, bytes);
    } else {
        while (isWritten && !bytes.isEmpty()) {
            DWORD written = 0;
            isWritten = ::WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) != 0;
            bytes = bytes.sliced(written);
        }
    }
    if (isWritten)
        return true;
    const DWORD number = ::GetLastError();
    if (number == ERROR_BROKEN_PIPE || number == ERROR_NO_DATA)
        return false;
    return systemError(number, {}, "WriteFile");
}

} // namespace ravlin::platform
