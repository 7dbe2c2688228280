#include "platform/systemfolders.h"

#include "platform/native_windows.h"

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
    PIDLIST_ABSOLUTE list = nullptr;
    if (FAILED(::SHGetSpecialFolderLocation(nullptr, number, &list)))
        return {};
    const QString path = pathFrom([list](wchar_t *buffer, UINT size) {
        return ::SHGetPathFromIDListEx(list, buffer, size, GPFIDL_DEFAULT) ? static_cast<UINT>(std::wcslen(buffer)) : 0;
    });
    ::CoTaskMemFree(list);
    return path;
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
