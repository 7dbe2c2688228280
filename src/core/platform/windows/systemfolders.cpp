// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/systemfolders.h"

#include "core/platform/windows/native.h"

#include <array>

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
    // One that is not there yet has a path all the same.
    std::array<wchar_t, MAX_PATH> told{};
    const HRESULT outcome =
        ::SHGetFolderPathW(nullptr, number | CSIDL_FLAG_DONT_VERIFY, nullptr, SHGFP_TYPE_CURRENT, told.data());
    return SUCCEEDED(outcome) ? fromWide(told.data()) : QString();
}

QString windowsFolder()
{
    return pathFrom([](wchar_t *buffer, UINT size) { return ::GetWindowsDirectoryW(buffer, size); });
}

QString systemFolder()
{
    return pathFrom([](wchar_t *buffer, UINT size) { return ::GetSystemDirectoryW(buffer, size); });
}

} // namespace ravlin::platform
