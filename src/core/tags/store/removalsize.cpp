// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/store/removalsize.h"

#include "core/platform/fileio.h"
#include "core/tags/id3/id3v2.h"

#include <QSet>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <utility>

namespace ravlin {

namespace {

constexpr qint64 LargeFrame = 64 * 1024; ///< bytes; smaller ones count each time
constexpr qint64 SampleSize = 1024;

using Look = std::pair<qint64, QByteArray>; ///< a large frame's size, and bytes from its middle

/// What a tag header at the file's start claims, as far as the file reaches.
qint64 tagSize(platform::File &file)
{
    const auto info = file.info();
    if (!info || info->size < id3::TagHeaderSize)
        return 0;
    const auto bytes = platform::readExactly(file, 0, id3::TagHeaderSize);
    const auto header = bytes ? id3::parseTagHeader({bytes->constData(), static_cast<size_t>(bytes->size())})
                              : std::optional<id3::TagHeader>();
    return header ? std::min(header->regionSize(), info->size) : 0;
}

/// How many bytes of the tag are in large frames that were met before.
qint64 metBefore(platform::File &file, QSet<Look> &met)
{
    const auto info = file.info();
    if (!info)
        return 0;
    platform::FileSource source(file, info->size);
    const auto tag = id3::Tag::parse(source, id3::Detail::Everything);
    if (!tag || !*tag)
        return 0;
    qint64 known = 0;
    for (const id3::Frame &frame : (*tag)->frames()) {
        const id3::FrameHeader &header = frame.header;
        if (header.size() < LargeFrame)
            continue;
        const auto sample = platform::readExactly(file, header.bodyOffset + header.bodySize / 2, SampleSize);
        const Look look(header.size(), sample.value_or(QByteArray()));
        if (sample && met.contains(look))
            known += header.size();
        else
            met.insert(look);
    }
    return known;
}

template <typename Measure>
qint64 sumOver(platform::FileSystem &fileSystem, const QStringList &paths, Measure measure)
{
    qint64 sum = 0;
    for (const QString &path : paths) {
        if (const auto file = fileSystem.open(path, platform::OpenMode::Read))
            sum += measure(**file);
    }
    return sum;
}

} // namespace

qint64 removalSize(platform::FileSystem &fileSystem, const QStringList &paths, qint64 worthwhile)
{
    const qint64 all = sumOver(fileSystem, paths, tagSize);
    if (all <= worthwhile)
        return all;
    QSet<Look> met;
    return all - sumOver(fileSystem, paths, [&met](platform::File &file) { return metBefore(file, met); });
}

} // namespace ravlin
