// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/filetype.h"

#include "core/platform/windows/native.h"

#include <algorithm>

#include <shlobj.h>

namespace ravlin::platform {
namespace {

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

/// A path with a blank is quoted: else the system would try its first word as a program.
QString command(const QString &programPath)
{
    const bool needsQuotes = programPath.contains(u' ');
    return (needsQuotes ? u'"' + programPath + u'"' : programPath) + QStringLiteral(" %1");
}

} // namespace

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

} // namespace ravlin::platform
