// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/desktop.h"

#include "core/platform/windows/native.h"

#include <QDir>
#include <QStandardPaths>
#include <QUuid>

#include <algorithm>
#include <array>
#include <string>

#include <shlobj.h>

namespace ravlin::platform {
namespace {

constexpr UINT MostCharacters = 32 * 1024;

template <typename Call>
QString pathFrom(Call call)
{
    std::wstring buffer(MostCharacters, L'\0');
    const UINT length = call(buffer.data(), MostCharacters);
    return length < MostCharacters ? QString::fromWCharArray(buffer.data(), length) : QString();
}

tl::unexpected<Error> failure(ErrorCode code, const QString &path, const QString &detail)
{
    return tl::unexpected(Error{code, path, detail});
}

bool isPlainCharacter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'-' || c == u'_' ||
           c == u'.';
}

bool isClassName(const QString &name)
{
    return !name.isEmpty() && !name.startsWith(u'.') && std::all_of(name.begin(), name.end(), isPlainCharacter);
}

bool hasControlCharacter(const QString &text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x20 || c.unicode() == 0x7f; });
}

/// Sets the default value of a key below the user's part of the classes root.
Result<void> setDefault(const QString &key, const QString &value)
{
    const std::wstring path = (QStringLiteral("Software\\Classes\\") + key).toStdWString();
    const std::wstring text = value.toStdWString();
    const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    HKEY opened = nullptr;
    LSTATUS status =
        ::RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &opened, nullptr);
    if (status == ERROR_SUCCESS) {
        status = ::RegSetValueExW(opened, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE *>(text.c_str()), size);
        ::RegCloseKey(opened);
    }
    if (status != ERROR_SUCCESS)
        return systemError(static_cast<DWORD>(status), key, "RegSetValueExW");
    return {};
}

/// A path with a blank is quoted, or the system would try its first word as a program.
QString command(const QString &programPath)
{
    const bool needsQuotes = programPath.contains(u' ');
    return (needsQuotes ? u'"' + programPath + u'"' : programPath) + QStringLiteral(" %1");
}

const QString Root = QStringLiteral("c:\\");

/// Most users may create folders there, but no files. Only an attempt shows it.
bool canWriteToRoot()
{
    const NativePath attempt(Root + QUuid::createUuid().toString(QUuid::Id128) + QStringLiteral(".tmp"));
    const Handle file(::CreateFileW(attempt.text(), GENERIC_WRITE | DELETE, ShareAll, nullptr, CREATE_NEW,
        FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    return static_cast<bool>(file);
}

} // namespace

QString specialFolder(int number)
{
    QString path;
    PIDLIST_ABSOLUTE list = nullptr;
    if (SUCCEEDED(::SHGetSpecialFolderLocation(nullptr, number, &list))) {
        path = pathFrom([list](wchar_t *buffer, UINT size) {
            const BOOL found = ::SHGetPathFromIDListEx(list, buffer, size, GPFIDL_DEFAULT);
            return found ? static_cast<UINT>(std::wcslen(buffer)) : 0;
        });
        ::CoTaskMemFree(list);
    }
    if (!path.isEmpty())
        return path;
    // A folder that does not exist yet has a path all the same.
    std::array<wchar_t, MAX_PATH> found{};
    const HRESULT outcome =
        ::SHGetFolderPathW(nullptr, number | CSIDL_FLAG_DONT_VERIFY, nullptr, SHGFP_TYPE_CURRENT, found.data());
    return SUCCEEDED(outcome) ? fromWide(found.data()) : QString();
}

QString windowsFolder()
{
    return pathFrom([](wchar_t *buffer, UINT size) { return ::GetWindowsDirectoryW(buffer, size); });
}

QString systemFolder()
{
    return pathFrom([](wchar_t *buffer, UINT size) { return ::GetSystemDirectoryW(buffer, size); });
}

Result<void> makeFileDefault(const FileType &type)
{
    if (!isClassName(type.className))
        return failure(ErrorCode::InvalidArgument, type.className, QStringLiteral("not a class name"));
    if (type.programPath.isEmpty() || type.programPath.contains(u'"') || hasControlCharacter(type.programPath) ||
        hasControlCharacter(type.description))
        return failure(ErrorCode::InvalidArgument, type.programPath, QStringLiteral("not a program's path"));
    const QString extension = type.extension.startsWith(u'.') ? type.extension : u'.' + type.extension;
    if (extension.size() < 2 || extension.contains(Separator) || hasControlCharacter(extension))
        return failure(ErrorCode::InvalidArgument, type.extension, QStringLiteral("not an extension"));

    return setDefault(type.className, type.description)
        .and_then([&] { return setDefault(extension, type.className); })
        .and_then([&] {
            return setDefault(type.className + QStringLiteral("\\shell\\open\\command"), command(type.programPath));
        })
        .map([] { ::SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_IDLIST, nullptr, nullptr); });
}

std::optional<QByteArray> toCodePage(const QString &text)
{
    if (text.isEmpty())
        return QByteArray();
    const std::wstring wide = text.toStdWString();
    const int length = static_cast<int>(wide.size());
    // With UTF-8 as the system's code page every character fits, and the call refuses the two parameters about that.
    const bool isUtf8 = ::GetACP() == CP_UTF8;
    const DWORD flags = isUtf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
    BOOL isReplaced = FALSE;
    BOOL *const replaced = isUtf8 ? nullptr : &isReplaced;
    const int size = ::WideCharToMultiByte(CP_ACP, flags, wide.data(), length, nullptr, 0, nullptr, replaced);
    if (size <= 0 || isReplaced != FALSE)
        return std::nullopt;
    QByteArray bytes(size, Qt::Uninitialized);
    const int written =
        ::WideCharToMultiByte(CP_ACP, flags, wide.data(), length, bytes.data(), size, nullptr, replaced);
    if (written != size || isReplaced != FALSE)
        return std::nullopt;
    return bytes;
}

QUrl addressOf(const QString &path)
{
    return QDir::isAbsolutePath(path) ? QUrl::fromLocalFile(path) : QUrl();
}

QString fixedFilePath(const QString &name)
{
    if (canWriteToRoot())
        return Root + name;
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    const QString folder = inFolder(QDir::toNativeSeparators(cache), QStringLiteral("ravlin"));
    QDir().mkpath(folder); // a failure shows when a file is written there
    return inFolder(folder, name);
}

quint32 newFilePermissions()
{
    return 0666;
}

} // namespace ravlin::platform
