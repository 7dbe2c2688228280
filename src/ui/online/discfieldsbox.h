// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/discapply.h"

#include <QStringList>
#include <QWidget>

class QLineEdit;

namespace ravlin {

class Captions;
class PlainLabel;

/// The text boxes for the fields that all files of a disc get.
class DiscFieldsBox : public QWidget
{
    Q_OBJECT

public:
    explicit DiscFieldsBox(QWidget *parent);

    void setFields(const DiscFields &fields);
    DiscFields fields() const;
    /// A sentence about each text that cannot be saved.
    QStringList remarks(const Captions &captions) const;
    /// Marks the first box whose text no tag can hold, if there is one.
    bool refuse(const Captions &captions);
    /// Whether "Blues" and "DanceHall" count as genres (see isStorable).
    void setOnlyEdited(bool isOn) { m_isOnlyEdited = isOn; }
    /// The last box in Tab order.
    QWidget *lastBox() const;
    void applyCaptions(const Captions &captions);

Q_SIGNALS:
    void edited();

private:
    PlainLabel *m_artistLabel;
    QLineEdit *m_artist;
    PlainLabel *m_albumLabel;
    QLineEdit *m_album;
    PlainLabel *m_yearLabel;
    QLineEdit *m_year;
    PlainLabel *m_genreLabel;
    QLineEdit *m_genre;
    bool m_isOnlyEdited = false;
};

} // namespace ravlin
