// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/programstate.h"

#include <QGroupBox>

class QPushButton;
class QSpinBox;

namespace ravlin {

class Captions;
class PlainLabel;

namespace history {
class History;
}

/// The part of the options about the history: how long and how large it may get, how large it is, and a button that
/// forgets all of it at once.
class HistoryBox : public QGroupBox
{
    Q_OBJECT

public:
    /// Both outlive it.
    HistoryBox(const Captions &captions, history::History &history, QWidget *parent);

    void show(const FurtherOptions &options);
    /// Puts the choices in.
    void choose(FurtherOptions &options) const;
    /// Keeps choices that are not saved yet.
    void applyCaptions();
    /// For a column of labels with others.
    QList<QWidget *> labels() const;

private:
    void showSize();
    void askToForget();
    void forget();

    const Captions &m_captions;
    history::History &m_history;
    PlainLabel *m_daysLabel;
    QSpinBox *m_days;
    PlainLabel *m_megabytesLabel;
    QSpinBox *m_megabytes;
    PlainLabel *m_size;
    QPushButton *m_forget;
};

} // namespace ravlin
