#include "core/files/operations/clsfilefunc.h"

#include "core/storage/asidename.h"
#include "core/platform/filetype.h"
#include "core/platform/systemfolders.h"

#include <algorithm>

namespace ravlin {

namespace {

qsizetype nameStart(const QString &path)
{
    return path.lastIndexOf(platform::Separator) + 1;
}

} // namespace

int clsFileFunc::CopyFile(const QString &source, const QString &destination, bool allowUndo, int flags)
{
    if (source.isEmpty() || destination.isEmpty())
        return ResultDone;
    return RunFileOperation(source, destination, FileOperation::Copy, allowUndo, flags);
}

int clsFileFunc::MoveFile(const QString &source, const QString &destination, bool allowUndo, int flags)
{
    if (source.isEmpty() || destination.isEmpty())
        return ResultDone;
    return RunFileOperation(source, destination, FileOperation::Move, allowUndo, flags);
}

int clsFileFunc::RenameFile(const QString &source, const QString &newName, bool allowUndo, int flags)
{
    if (source.isEmpty() || newName.isEmpty())
        return ResultDone;
    return RunFileOperation(source, newName, FileOperation::Rename, allowUndo, flags);
}

int clsFileFunc::DeleteFile(const QString &source, bool allowUndo, int flags)
{
    if (source.isEmpty())
        return ResultDone;
    return RunFileOperation(source, {}, FileOperation::Delete, allowUndo, flags);
}

int clsFileFunc::RunFileOperation(
    const QString &source, const QString &destination, FileOperation operation, bool allowUndo, int flags)
{
    if (m_service == nullptr)
        return ResultCancelled;
    FileRequest request;
    request.operation = operation;
    request.source = source;
    request.destination = destination;
    request.flags = allowUndo ? flags | FlagAllowUndo : flags; // once only, also where the caller has it
    return m_service->perform(request);
}

Result<void> clsFileFunc::RenameFile(const QString &source, const QString &newName)
{
    if (source.isEmpty() || newName.isEmpty() || source == newName)
        return {};
    Result<void> renamed = m_fileSystem.renameNew(source, newName);
    if (renamed || renamed.error().code != ErrorCode::AlreadyExists || !isSameButForCase(source, newName))
        return renamed;
    return renameInTwoSteps(source, newName);
}

bool clsFileFunc::isSameButForCase(const QString &source, const QString &newName)
{
    const qsizetype start = nameStart(source);
    if (start != nameStart(newName) || source.first(start) != newName.first(start) ||
        source.toCaseFolded() != newName.toCaseFolded())
        return false;
    const Result<platform::FileInfo> one = m_fileSystem.info(source);
    const Result<platform::FileInfo> other = m_fileSystem.info(newName);
    if (!one || !other || one->inode != other->inode || one->device != other->device)
        return false;
    // Two names of one file on a file system that heeds case look the same up to here.
    const Result<std::vector<QString>> names =
        m_fileSystem.names(start == 0 ? QStringLiteral(".") : source.first(start));
    return names && std::ranges::find(*names, newName.sliced(start)) == names->end();
}

/// No file system renames to a name that is the file's own already, so it gets another one in between.
Result<void> clsFileFunc::renameInTwoSteps(const QString &source, const QString &newName)
{
    const QString aside = asidePath(source);
    const auto lock = lockAside(m_fileSystem, source);
    if (const Result<void> moved = m_fileSystem.renameNew(source, aside); !moved)
        return moved;
    Result<void> renamed = m_fileSystem.renameNew(aside, newName);
    if (!renamed)
        static_cast<void>(m_fileSystem.renameNew(aside, source)); // else it keeps a name that tells what it was
    return renamed;
}

Result<void> clsFileFunc::MakeFileDefault(
    const QString &className, const QString &description, const QString &programPath, const QString &extension)
{
    return platform::makeFileDefault({className, description, programPath, extension});
}

QString clsFileFunc::GetSpecialFolder(quintptr /*owner*/, int number)
{
    return platform::specialFolder(number);
}

QString clsFileFunc::GetWinPath()
{
    return platform::windowsFolder();
}

QString clsFileFunc::GetSysPath()
{
    return platform::systemFolder();
}

} // namespace ravlin
