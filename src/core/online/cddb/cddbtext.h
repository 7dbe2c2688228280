// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

/// Texts as CD databases send them.
namespace ravlin::cddb {

/// The text on one line: without control characters, and without blanks around it.
QString onOneLine(const QString &text);

struct ArtistAndTitle
{
    QString artist;
    QString title;
    bool isDivided = false; ///< the text had a " / "; without one both are the whole text
};
/// Divides "artist / title" at the first " / ". Both come on one line.
ArtistAndTitle dividedTitle(const QString &text);

/// Whether a disc's artist only says that there are many ("Various", "Varios artistas", "Artistes divers").
bool isVariousArtists(QStringView artist);

} // namespace ravlin::cddb
