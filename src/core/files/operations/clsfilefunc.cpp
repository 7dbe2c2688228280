// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/clsfilefunc.h"

#include "core/platform/desktop.h"
#include "core/storage/saferename.h"

namespace ravlin {

QString sourceList(const QString &folder, const QStringList &rowTexts)
{
    QString list;
    for (const QString &text : rowTexts)
        list += folder + text + QChar(u'\0');
    return list;
}

QStringList sourcePaths(const QString &source)
{
    return source.split(QChar(u'\0'), Qt::SkipEmptyParts);
}

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
    request.flags = allowUndo ? flags | FlagAllowUndo : flags; // sets it once, even if the caller set it
    return m_service->perform(request);
}

Result<void> clsFileFunc::RenameFile(const QString &source, const QString &newName)
{
    return storage::renameFile(m_fileSystem, source, newName);
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
