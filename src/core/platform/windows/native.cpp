// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/windows/native.h"

#include <array>

namespace ravlin::platform {
namespace {

constexpr qint64 HundredNanoseconds = 100;
constexpr qint64 EpochDifference = 116'444'736'000'000'000; ///< from 1601 to 1970 in steps of 100 ns

const QString Prefix = QStringLiteral(R"(\\?\)");
const QString SharePrefix = QStringLiteral(R"(\\?\UNC\)");

bool isDrivePath(const QString &path)
{
    return path.size() >= 3 && path.at(0).isLetter() && path.at(1) == u':' && path.at(2) == Separator;
}

/// Whether the system has to resolve the path first, which the prefix turns off.
bool needsResolving(const QString &path)
{
    if (!isDrivePath(path) && !path.startsWith(QStringLiteral(R"(\\)")))
        return true;
    const QString ended = withEndSeparator(path);
    return path.mid(2).contains(QStringLiteral(R"(\\)")) || ended.contains(QStringLiteral(R"(\.\)")) ||
           ended.contains(QStringLiteral(R"(\..\)"));
}

QString resolved(const QString &path)
{
    const std::wstring text = path.toStdWString();
    const DWORD size = ::GetFullPathNameW(text.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    const DWORD length = ::GetFullPathNameW(text.c_str(), size, full.data(), nullptr);
    return length > 0 && length < size ? QString::fromWCharArray(full.data(), length) : path;
}

ErrorCode codeFor(DWORD number)
{
    switch (number) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_NOT_READY:
    case ERROR_DIRECTORY: // "the folder's name is invalid": a file stands in its place
        return ErrorCode::NotFound;
    case ERROR_CANT_RESOLVE_FILENAME:
        return ErrorCode::NotAFile;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_PRIVILEGE_NOT_HELD:
    case ERROR_CURRENT_DIRECTORY:
    case ERROR_USER_MAPPED_FILE:
    case ERROR_DELETE_PENDING:
        return ErrorCode::AccessDenied;
    case ERROR_WRITE_PROTECT:
        return ErrorCode::ReadOnlyDrive;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case ERROR_DISK_QUOTA_EXCEEDED:
        return ErrorCode::NoSpace;
    case ERROR_FILE_TOO_LARGE:
        return ErrorCode::FileSizeLimit;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
    case ERROR_DIR_NOT_EMPTY:
        return ErrorCode::AlreadyExists;
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_INVALID_PARAMETER:
        return ErrorCode::InvalidArgument;
    case ERROR_FILENAME_EXCED_RANGE:
        return ErrorCode::NameTooLong;
    case ERROR_NOT_SAME_DEVICE:
    case ERROR_NOT_SUPPORTED:
    case ERROR_INVALID_FUNCTION:
    case ERROR_CALL_NOT_IMPLEMENTED:
        return ErrorCode::Unsupported;
    default:
        return ErrorCode::Io;
    }
}

quint64 joined(quint32 high, quint32 low)
{
    constexpr unsigned Half = 32;
    return (quint64(high) << Half) | low;
}

qint64 nanoseconds(const LARGE_INTEGER &time)
{
    return (time.QuadPart - EpochDifference) * HundredNanoseconds;
}

} // namespace

NativePath::NativePath(const QString &path)
{
    if (path.isEmpty() || path.contains(QChar(0)))
        return;
    QString text = path;
    text.replace(u'/', Separator);
    if (text.size() == 2 && text.at(1) == u':')
        text += Separator; // or it would mean the current folder of that drive
    if (!text.startsWith(Prefix)) {
        if (needsResolving(text))
            text = resolved(text);
        if (text.startsWith(QStringLiteral(R"(\\)")) && !text.startsWith(QStringLiteral(R"(\\.\)")))
            text = SharePrefix + text.mid(2);
        else if (isDrivePath(text))
            text = Prefix + text;
    }
    m_text = text.toStdWString();
}

QString withoutPrefix(const QString &native)
{
    if (native.startsWith(SharePrefix))
        return QStringLiteral(R"(\\)") + native.mid(SharePrefix.size());
    return native.startsWith(Prefix) ? native.mid(Prefix.size()) : native;
}

Handle openExisting(const NativePath &path, DWORD access, DWORD flags)
{
    return Handle(::CreateFileW(
        path.text(), access, ShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr));
}

tl::unexpected<Error> systemError(DWORD number, const QString &path, const char *call)
{
    constexpr DWORD MostCharacters = 512;
    std::array<wchar_t, MostCharacters> buffer{};
    constexpr DWORD English = MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US);
    const DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    if (::FormatMessageW(flags, nullptr, number, English, buffer.data(), MostCharacters, nullptr) == 0)
        ::FormatMessageW(flags, nullptr, number, 0, buffer.data(), MostCharacters, nullptr);
    const QString text = fromWide(buffer.data()).trimmed();
    return tl::unexpected(Error{codeFor(number), path,
        QStringLiteral("%1: %2 (%3)").arg(QString::fromLatin1(call), text, QString::number(number))});
}

Result<FileInfo> infoOf(HANDLE handle, const QString &path)
{
    BY_HANDLE_FILE_INFORMATION plain{};
    FILE_BASIC_INFO basic{};
    FILE_STANDARD_INFO standard{};
    if (!::GetFileInformationByHandle(handle, &plain) ||
        !::GetFileInformationByHandleEx(handle, FileBasicInfo, &basic, sizeof basic) ||
        !::GetFileInformationByHandleEx(handle, FileStandardInfo, &standard, sizeof standard))
        return lastError(path, "GetFileInformationByHandle");

    constexpr quint32 ReadableByAll = 0444;
    constexpr quint32 WritableByAll = 0666;
    constexpr quint32 OnlyByOwner = 0700;
    FileInfo info;
    info.modified = nanoseconds(basic.LastWriteTime);
    info.changed = nanoseconds(basic.ChangeTime);
    info.inode = joined(plain.nFileIndexHigh, plain.nFileIndexLow);
    info.device = plain.dwVolumeSerialNumber;
    info.linkCount = standard.DeletePending != 0 ? 0 : plain.nNumberOfLinks;
    info.isFolder = (plain.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    // A folder's read-only attribute keeps nobody out; access lists do.
    info.permissions = info.isFolder                                             ? OnlyByOwner
                       : (plain.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0 ? ReadableByAll
                                                                                 : WritableByAll;
    info.isFile = !info.isFolder && ::GetFileType(handle) == FILE_TYPE_DISK;
    info.size = info.isFolder ? 0 : standard.EndOfFile.QuadPart;
    return info;
}

bool isLink(HANDLE handle)
{
    FILE_ATTRIBUTE_TAG_INFO info{};
    return ::GetFileInformationByHandleEx(handle, FileAttributeTagInfo, &info, sizeof info) != 0 &&
           (info.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(info.ReparseTag);
}

Result<Node> nodeOf(HANDLE handle, const QString &path)
{
    return infoOf(handle, path).map([&](const FileInfo &info) {
        const NodeKind kind = isLink(handle)  ? NodeKind::Link
                              : info.isFolder ? NodeKind::Folder
                              : info.isFile   ? NodeKind::File
                                              : NodeKind::Other;
        return Node{kind, info};
    });
}

} // namespace ravlin::platform
