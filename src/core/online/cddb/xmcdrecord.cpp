// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/xmcdrecord.h"

#include "core/online/cddb/cddbtext.h"
#include "core/online/web/webtext.h"
#include "core/tags/record/genres.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

/// Parses a number of a few digits at the start of the text, after blanks.
std::optional<qint64> leadingNumber(QByteArrayView text)
{
    text = text.trimmed();
    qsizetype length = 0;
    while (length < text.size() && text[length] >= '0' && text[length] <= '9')
        ++length;
    constexpr qsizetype MostDigits = 9;
    if (length == 0 || length > MostDigits)
        return {};
    return text.first(length).toLongLong();
}

/// The index of the track in a key such as TTITLE3.
std::optional<int> trackIndex(QByteArrayView key, QByteArrayView prefix)
{
    if (!key.startsWith(prefix))
        return {};
    const QByteArrayView digits = key.sliced(prefix.size());
    const std::optional<qint64> number = leadingNumber(digits);
    if (!number || *number >= MaximumTracks || digits != QByteArray::number(*number))
        return {};
    return int(*number);
}

QString unescaped(const QString &text)
{
    QString plain;
    plain.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar next = text[i] == u'\\' && i + 1 < text.size() ? text[i + 1] : QChar();
        if (next == u'n' || next == u't' || next == u'\\') {
            plain += next == u'n' ? u'\n' : next == u't' ? u'\t' : u'\\';
            ++i;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

/// Builds a record line by line.
class Reader
{
public:
    void takeLine(QByteArrayView line)
    {
        if (line.startsWith('#'))
            takeComment(line.sliced(1).trimmed());
        else if (const qsizetype equals = line.indexOf('='); equals > 0 && isOfUse(line.first(equals)))
            m_values[line.first(equals).toByteArray()] += line.sliced(equals + 1).toByteArray();
    }

    std::optional<DiscRecord> record()
    {
        takeTracks();
        const QString title = value("DTITLE");
        if (m_record.tracks.empty() && title.trimmed().isEmpty())
            return {};
        const cddb::ArtistAndTitle divided = cddb::dividedTitle(title);
        m_record.artist = divided.artist;
        m_record.album = divided.title;
        m_record.extendedData = value("EXTD").trimmed();
        m_record.discIds = cddb::onOneLine(value("DISCID")).split(u',', Qt::SkipEmptyParts);
        divideTrackTitles();
        takeYearAndGenre();
        return std::move(m_record);
    }

private:
    /// Only known keys are kept, so that a record full of others takes no memory.
    static bool isOfUse(QByteArrayView key)
    {
        return key == "DTITLE" || key == "DYEAR" || key == "DGENRE" || key == "EXTD" || key == "DISCID" ||
               trackIndex(key, "TTITLE") || trackIndex(key, "EXTT");
    }

    QString value(const QByteArray &key) const { return unescaped(decodedText(m_values.value(key))); }

    void takeComment(QByteArrayView comment)
    {
        constexpr QByteArrayView DiscLength = "Disc length:";
        if (comment.startsWith("Track frame offsets"))
            m_isAmongOffsets = true;
        else if (comment.startsWith(DiscLength))
            m_record.seconds = int(leadingNumber(comment.sliced(DiscLength.size())).value_or(0));
        else if (const std::optional<qint64> offset = leadingNumber(comment); m_isAmongOffsets && offset)
            takeOffset(*offset);
        else
            m_isAmongOffsets = false;
    }

    void takeOffset(qint64 offset)
    {
        if (m_record.frameOffsets.size() < MaximumTracks)
            m_record.frameOffsets.push_back(offset);
    }

    void takeTracks()
    {
        for (auto entry = m_values.cbegin(); entry != m_values.cend(); ++entry) {
            if (const std::optional<int> index = trackIndex(entry.key(), "TTITLE"))
                trackAt(*index).title = unescaped(decodedText(entry.value()));
            else if (const std::optional<int> remarked = trackIndex(entry.key(), "EXTT"))
                trackAt(*remarked).extendedData = unescaped(decodedText(entry.value())).trimmed();
        }
    }

    DiscTrack &trackAt(int index)
    {
        if (m_record.tracks.size() <= size_t(index))
            m_record.tracks.resize(size_t(index) + 1);
        return m_record.tracks[size_t(index)];
    }

    /// On a disc of several artists, "artist / title" names both: if its artist is "various", or all its titles have
    /// that form. On other discs it is a title, as of a medley.
    void divideTrackTitles()
    {
        const auto isDivided = [](const DiscTrack &track) { return track.title.contains(u" / "); };
        const bool areAllDivided = m_record.tracks.size() > 1 && std::ranges::all_of(m_record.tracks, isDivided);
        const bool areSeveral = areAllDivided || cddb::isVariousArtists(m_record.artist);
        for (DiscTrack &track : m_record.tracks) {
            const cddb::ArtistAndTitle divided = cddb::dividedTitle(track.title);
            if (areSeveral && divided.isDivided)
                track.artist = divided.artist;
            track.title = areSeveral ? divided.title : cddb::onOneLine(track.title);
        }
    }

    void takeYearAndGenre()
    {
        static const QRegularExpression year(u"^\\s*([1-9][0-9]{3})(?![0-9])"_s);
        static const QRegularExpression oldYear(u"\\bYEAR:\\s*([1-9][0-9]{3})(?![0-9])"_s);
        static const QRegularExpression oldGenre(u"\\bID3G:\\s*([0-9]{1,3})(?![0-9])"_s);
        m_record.year = year.match(value("DYEAR")).captured(1);
        if (m_record.year.isEmpty())
            m_record.year = oldYear.match(m_record.extendedData).captured(1);
        m_record.genre = cddb::onOneLine(value("DGENRE"));
        if (const int number = standardGenreNumber(m_record.genre); number >= 0)
            m_record.genre = genreName(number);
        const QRegularExpressionMatch remarked = oldGenre.match(m_record.extendedData);
        if (m_record.genre.isEmpty() && remarked.hasMatch())
            m_record.genre = genreName(remarked.captured(1).toInt());
    }

    DiscRecord m_record;
    QHash<QByteArray, QByteArray> m_values;
    bool m_isAmongOffsets = false;
};

} // namespace

std::optional<DiscRecord> parseXmcdRecord(QByteArrayView bytes)
{
    Reader reader;
    while (!bytes.isEmpty()) {
        const qsizetype end = bytes.indexOf('\n');
        QByteArrayView line = end < 0 ? bytes : bytes.first(end);
        bytes = end < 0 ? QByteArrayView() : bytes.sliced(end + 1);
        while (line.endsWith('\r'))
            line.chop(1);
        reader.takeLine(line);
    }
    return reader.record();
}

std::optional<qint64> trackFrames(const DiscRecord &record, int index)
{
    const std::vector<qint64> &starts = record.frameOffsets;
    const auto position = size_t(index);
    if (position + 1 < starts.size())
        return starts[position + 1] - starts[position];
    if (position < starts.size() && record.seconds > 0)
        return qint64(record.seconds) * FramesPerSecond - starts[position];
    return {};
}

std::vector<std::optional<qint64>> lengthDifferences(const DiscContents &disc, const DiscRecord &record)
{
    std::vector<std::optional<qint64>> differences;
    for (int i = 0; i < disc.trackCount(); ++i) {
        const std::optional<qint64> length = trackFrames(record, i);
        differences.push_back(length ? std::optional(disc.trackFrames(i) - *length) : std::nullopt);
    }
    return differences;
}

} // namespace ravlin
