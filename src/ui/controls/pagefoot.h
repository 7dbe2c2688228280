// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QWidget>

class QGridLayout;
class QPushButton;

namespace ravlin {

class PlainLabel;

/// The foot of a page: its buttons at the right end, the last one in the same place on every page, and beside them a
/// hint of up to two lines. Where that leaves no room for the hint, it goes into a line above the buttons, and buttons
/// that don't fit beside each other stand one above the other.
class PageFoot : public QWidget
{
    Q_OBJECT

public:
    /// start: what stands at the left end; nullptr for nothing. Takes all of them over.
    PageFoot(QWidget *start, PlainLabel *hint, const QList<QPushButton *> &buttons, QWidget *parent = nullptr);

    /// For any width, whatever the present one.
    int heightForWidth(int width) const override;
    /// As wide as the widest button, and the height of one line.
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    bool event(QEvent *event) override;

private:
    enum class Arrangement
    {
        OneLine,
        HintAbove,
        OneBelowTheOther
    };
    Arrangement arrangementFor(int width) const;
    void arrange();
    void arrangeButtons(int row);
    void explainCutHint();
    int widthOfButtons() const;
    int heightOfLine() const;
    int heightOfHint() const;

    QWidget *m_start;
    PlainLabel *m_hint;
    QList<QPushButton *> m_buttons;
    QGridLayout *m_grid;
    Arrangement m_arrangement = Arrangement::OneLine;
};

} // namespace ravlin
