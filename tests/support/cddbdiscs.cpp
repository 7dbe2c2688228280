// SPDX-License-Identifier: GPL-3.0-or-later
// The discs of the CD database for tests: invented, but shaped like real ones.
#include "support/cddbserver.h"

using namespace Qt::StringLiterals;

namespace ravlin::test {

namespace {

int digitSum(qint64 number)
{
    return number < 10 ? int(number) : int(number % 10) + digitSum(number / 10);
}

std::vector<ServedDisc> madeDiscs()
{
    const std::vector<qint64> twice{150, 15000, 30100, 45225};
    const std::vector<qint64> shifted{150, 15040, 30110, 45300};
    return {
        {"rock", {175, 18469, 34444, 51154, 70524, 88841, 104824, 124686, 140966, 159454, 177600}, u"Las Gaviotas"_s,
            u"Mareas Lentas"_s, "1998", u"Rock"_s, u"Grabado en directo.\nPrimera edición"_s,
            {u"Puerto"_s, u"Sal y Viento"_s, u"La Niña del Faro"_s, u"Día de Pesca"_s, u"Bajamar"_s, u"Redes"_s,
                u"Canción de los que se fueron y no volvieron nunca más a la orilla de aquella playa larga y blanca del norte"_s,
                u"Niebla"_s, u"Dos \\ Dos"_s, u"Regreso"_s}},
        {"folk", {150, 21834, 43363, 63436, 89772, 115596, 138570, 167224, 190210, 211499}, u"Marie L'Été"_s,
            u"Côte d'Hiver"_s, "2003", u"Folk"_s, {},
            {u"Départ"_s, u"Où es-tu"_s, u"Forêt"_s, u"À l'aube"_s, u"Noël"_s, u"Garçon"_s, u"Cœur"_s, u"Été"_s,
                u"Fin"_s}},
        {"jazz", twice, u"The Quiet Three"_s, u"First Take"_s, "1961", u"Jazz"_s, {}, {u"One"_s, u"Two"_s, u"Three"_s}},
        {"misc", twice, u"The Quiet Three"_s, u"First Take (reissue)"_s, "1999", u"Jazz"_s, {},
            {u"One"_s, u"Two"_s, u"Three (mono)"_s}},
        {"newage", shifted, u"Somebody Else"_s, u"Almost as Long"_s, {}, {}, {}, {u"x"_s, u"y"_s, u"z"_s}},
        {"misc", {150, 20000, 40000, 60000}, u"Various"_s, u"Harbour Songs"_s, "1987", u"Pop"_s, {},
            {u"Ana Mar / Faro"_s, u"Les Marées / Phare"_s, u"Interlude"_s}},
        {"classical", {150, 9000, 33000}, u"夜の図書館"_s, u"静かな海"_s, "2011", u"Classical"_s, {},
            {u"序"_s, u"終わり"_s}},
    };
}

} // namespace

QByteArray ServedDisc::discId() const
{
    int sum = 0;
    for (size_t track = 0; track + 1 < marks.size(); ++track)
        sum += digitSum(marks[track] / 75);
    const qint64 seconds = marks.back() / 75 - marks.front() / 75;
    const qint64 id = (qint64(sum % 255) << 24) + (seconds << 8) + qint64(marks.size() - 1);
    return QByteArray::number(id, 16).rightJustified(8, '0');
}

QString ServedDisc::offsetText() const
{
    QStringList numbers;
    for (const qint64 mark : marks)
        numbers << QString::number(mark);
    return numbers.join(u' ');
}

const std::vector<ServedDisc> &CddbServer::discs()
{
    static const std::vector<ServedDisc> discs = madeDiscs();
    return discs;
}

} // namespace ravlin::test
