// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/record/genres.h"

#include <QHash>

#include <array>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr QStringView Table = u"Blues|ClassicRock|Country|Dance|Disco|Funk|Grunge|Hip-Hop|Jazz|Metal|NewAge|Oldies|"
                              u"Other|Pop|R&B|Rap|Reggae|Rock|Techno|Industrial|Alternative|Ska|DeathMetal|Pranks|"
                              u"Soundtrack|Euro-Techno|Ambient|Trip-Hop|Vocal|Jazz+Funk|Fusion|Trance|Classical|"
                              u"Instrumental|Acid|House|Game|SoundClip|Gospel|Noise|AlternRock|Bass|Soul|Punk|Space|"
                              u"Meditative|InstrumentalPop|InstrumentalRock|Ethnic|Gothic|Darkwave|Techno-Industrial|"
                              u"Electronic|Pop-Folk|Eurodance|Dream|SouthernRock|Comedy|Cult|Gangsta|Top40|"
                              u"ChristianRap|Pop/Funk|Jungle|NativeAmerican|Cabaret|NewWave|Psychadelic|Rave|"
                              u"Showtunes|Trailer|Lo-Fi|Tribal|AcidPunk|AcidJazz|Polka|Retro|Musical|Rock&Roll|"
                              u"HardRock|Folk|Folk-Rock|NationalFolk|Swing|FastFusion|Bebob|Latin|Revival|Celtic|"
                              u"Bluegrass|Avantgarde|GothicRock|ProgressiveRock|PsychedelicRock|SymphonicRock|"
                              u"SlowRock|BigBand|Chorus|EasyListening|Acoustic|Humour|Speech|Chanson|Opera|"
                              u"ChamberMusic|Sonata|Symphony|BootyBass|Primus|PornGroove|Satire|SlowJam|Club|Tango|"
                              u"Samba|Folklore|Ballad|PowerBallad|RhythmicSoul|Freestyle|Duet|PunkRock|DrumSolo|"
                              u"Acapella|Euro-House|DanceHall";

struct Spelling
{
    QStringView text; ///< as spellingKey() leaves it
    int number = 0;
};

/// Names that other programs use for genres and that differ from the table by more than case and punctuation.
constexpr std::array<Spelling, 11> OtherSpellings{{
    {u"jazzfunk", 29},
    {u"altrock", 40},
    {u"alternativerock", 40},
    {u"gangstarap", 59},
    {u"popfunk", 62},
    {u"nativeus", 64},
    {u"psychedelic", 67},
    {u"folk/rock", 81},
    {u"bebop", 85},
    {u"humor", 100},
    {u"acappella", 123},
}};

QStringView trimBlanks(QStringView text)
{
    while (text.startsWith(u' '))
        text = text.sliced(1);
    while (text.endsWith(u' '))
        text.chop(1);
    return text;
}

QString spellingKey(QStringView text)
{
    QString key;
    key.reserve(text.size());
    for (const QChar c : text) {
        if (!c.isSpace() && c != u'-' && c != u'_' && c != u'.')
            key += c;
    }
    return key.toCaseFolded();
}

QHash<QString, int> spellings()
{
    QHash<QString, int> numbers;
    for (int number = 0; number < GenreCount; ++number)
        numbers.insert(spellingKey(genreName(number)), number);
    for (const Spelling &other : OtherSpellings)
        numbers.insert(other.text.toString(), other.number);
    return numbers;
}

} // namespace

QStringView genreTable()
{
    return Table;
}

const QStringList &genreNames()
{
    static const QStringList names = Table.toString().split(u'|');
    return names;
}

QString genreName(int number)
{
    return genreNames().value(number);
}

int GenreNameToNumber(QStringView name)
{
    const QStringView genre = trimBlanks(name);
    if (genre.isEmpty())
        return GenreNone;

    static const QString barredTable = u'|' + Table.toString();
    const QString wanted = u'|' + genre.toString() + u'|';
    const qsizetype before = barredTable.indexOf(wanted, 0, Qt::CaseInsensitive);
    if (before <= 0) // not found, or the first name
        return GenreNone;
    // Every name before this one has its bar in front of it.
    return static_cast<int>(QStringView(barredTable).first(before).count(u'|'));
}

int tableGenreNumber(QStringView name)
{
    const QStringView genre = trimBlanks(name);
    for (int number = 0; number < GenreCount; ++number) {
        if (genre.compare(genreNames()[number], Qt::CaseInsensitive) == 0)
            return number;
    }
    return GenreNone;
}

int standardGenreNumber(QStringView text)
{
    static const QHash<QString, int> numbers = spellings();
    return numbers.value(spellingKey(text), -1);
}

} // namespace ravlin
