// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/fileio.h"

#include <algorithm>
#include <cstring>

namespace ravlin::platform {
namespace {

constexpr qint64 ChunkSize = 256 * 1024;

std::span<char> writable(QByteArray &bytes)
{
    return {bytes.data(), static_cast<size_t>(bytes.size())};
}

} // namespace

Result<void> writeAll(File &file, QByteArrayView bytes, qint64 offset)
{
    while (!bytes.isEmpty()) {
        const auto written = file.writeAt({bytes.data(), static_cast<size_t>(bytes.size())}, offset);
        if (!written)
            return tl::unexpected(written.error());
        bytes = bytes.sliced(static_cast<qsizetype>(*written));
        offset += *written;
    }
    return {};
}

Result<QByteArray> readExactly(File &file, qint64 offset, qint64 length)
{
    QByteArray bytes(static_cast<qsizetype>(length), Qt::Uninitialized);
    const auto got = file.readAt(writable(bytes), offset);
    if (!got)
        return tl::unexpected(got.error());
    if (*got != length)
        return tl::unexpected(Error{
            ErrorCode::ChangedMeanwhile, {}, QStringLiteral("the file ends before byte %1").arg(offset + length)});
    return bytes;
}

Result<void> copyAll(File &source, qint64 sourceOffset, File &target, qint64 offset, qint64 length)
{
    qint64 done = 0;
    while (done < length) {
        const auto copied = target.copyFrom(source, sourceOffset + done, offset + done, length - done);
        if (!copied)
            return tl::unexpected(copied.error());
        if (*copied == 0)
            return tl::unexpected(Error{ErrorCode::ChangedMeanwhile, {},
                QStringLiteral("the file ends before byte %1").arg(sourceOffset + length)});
        done += *copied;
    }
    return {};
}

Result<bool> sameBytes(File &one, qint64 oneOffset, File &other, qint64 otherOffset, qint64 length)
{
    QByteArray buffer(static_cast<qsizetype>(std::min(ChunkSize, length)), Qt::Uninitialized);
    for (qint64 done = 0; done < length;) {
        const qint64 wanted = std::min(ChunkSize, length - done);
        const auto got = one.readAt(writable(buffer).first(static_cast<size_t>(wanted)), oneOffset + done);
        if (!got)
            return tl::unexpected(got.error());
        if (*got != wanted)
            return false;
        const auto same =
            sameBytes(other, otherOffset + done, QByteArrayView(buffer.constData(), static_cast<qsizetype>(wanted)));
        if (!same || !*same)
            return same;
        done += wanted;
    }
    return true;
}

Result<bool> sameBytes(File &file, qint64 offset, QByteArrayView bytes)
{
    QByteArray buffer(std::min(static_cast<qsizetype>(ChunkSize), bytes.size()), Qt::Uninitialized);
    while (!bytes.isEmpty()) {
        const auto wanted = static_cast<size_t>(std::min(buffer.size(), bytes.size()));
        const auto got = file.readAt(writable(buffer).first(wanted), offset);
        if (!got)
            return tl::unexpected(got.error());
        if (*got != static_cast<qint64>(wanted) || std::memcmp(buffer.constData(), bytes.data(), wanted) != 0)
            return false;
        bytes = bytes.sliced(static_cast<qsizetype>(wanted));
        offset += static_cast<qint64>(wanted);
    }
    return true;
}

Result<void> removeTree(HeldFolder &folder, const QString &name)
{
    const Result<Node> node = folder.node(name);
    if (!node)
        return tl::unexpected(node.error());
    if (node->kind != NodeKind::Folder)
        return folder.remove(name);
    const Result<std::shared_ptr<HeldFolder>> inner = folder.openFolder(name);
    if (!inner)
        return tl::unexpected(inner.error());
    const Result<std::vector<QString>> names = (*inner)->names();
    if (!names)
        return tl::unexpected(names.error());
    for (const QString &each : *names) {
        if (auto removed = removeTree(**inner, each); !removed)
            return removed;
    }
    return folder.removeFolder(name);
}

Result<Place> placeAt(FileSystem &fileSystem, const QString &path)
{
    return fileSystem.openFolder(folderOf(path)).map([&](const std::shared_ptr<HeldFolder> &folder) {
        return Place{folder, nameOf(path)};
    });
}

} // namespace ravlin::platform
