// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/record/unsavededits.h"

#include <QDataStream>
#include <QIODevice>

#include <array>

namespace ravlin {

namespace {

constexpr quint8 Format = 1;

template <typename Edits>
auto textsOf(Edits &edits)
{
    auto &record = edits.record;
    return std::array{&edits.path, &record.Title, &record.Artist, &record.Album, &record.Year, &record.Comment,
        &record.Track, &record.Genre};
}

} // namespace

QString UnsavedEdits::toText() const
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    stream << Format;
    for (const QString *text : textsOf(*this)) // their code units: a path need not be Unicode
        stream << *text;
    return QString::fromLatin1(bytes.toBase64());
}

std::optional<UnsavedEdits> UnsavedEdits::fromText(const QString &text)
{
    const auto decoded = QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return {};
    QDataStream stream(decoded.decoded);
    stream.setVersion(QDataStream::Qt_6_0);
    quint8 format = 0;
    UnsavedEdits edits;
    stream >> format;
    for (QString *field : textsOf(edits))
        stream >> *field;
    if (format != Format || stream.status() != QDataStream::Ok || !stream.atEnd() || edits.path.isEmpty())
        return {};
    return edits;
}

} // namespace ravlin
