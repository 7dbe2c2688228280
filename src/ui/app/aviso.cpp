// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/aviso.h"

#include "core/app/idiomas.h"
#include "core/files/list/listcolumns.h"
#include "core/platform/path.h"
#include "ui/controls/elidedlabel.h"
#include "ui/controls/icons.h"
#include "ui/controls/making.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QStyle>
#include <QToolButton>

namespace ravlin {

aviso::aviso(const Captions &captions, QWidget *parent) : QFrame(parent), m_captions(captions)
{
    setObjectName(QStringLiteral("aviso"));
    setFrameStyle(QFrame::StyledPanel | QFrame::Plain);
    m_label = made<ElidedLabel>("aviso_texto", this);
    m_details = made<QToolButton>("aviso_detalles", this);
    m_undo = made<QToolButton>("aviso_deshacer", this);
    m_putBack = made<QToolButton>("aviso_recuperar", this);
    m_choose = made<QToolButton>("aviso_elegir", this);
    m_close = made<QToolButton>("aviso_cerrar", this);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(6, 2, 2, 2);
    row->addWidget(m_label, 1);
    for (QToolButton *button : {m_putBack, m_choose, m_details, m_undo, m_close}) {
        button->setFocusPolicy(Qt::TabFocus); // a click leaves the focus where the user works
        button->setAutoRaise(button == m_close);
        button->setToolButtonStyle(button == m_undo ? Qt::ToolButtonTextBesideIcon : Qt::ToolButtonTextOnly);
        row->addWidget(button);
    }
    m_close->setToolButtonStyle(Qt::ToolButtonIconOnly);
    connect(m_details, &QToolButton::clicked, this, &aviso::detailsRequested);
    connect(m_undo, &QToolButton::clicked, this, [this] {
        if (m_summary)
            Q_EMIT undoRequested(m_summary->entry.id);
    });
    connect(m_putBack, &QToolButton::clicked, this, &aviso::putBackRequested);
    connect(m_choose, &QToolButton::clicked, this, &aviso::chooseRequested);
    connect(m_close, &QToolButton::clicked, this, [this] {
        m_summary.reset();
        m_recovery.reset();
        m_unsaved.clear();
        m_isOffered = false;
        Q_EMIT dismissed();
        refresh();
    });
    applyIcons();
    applyCaptions();
}

void aviso::showSummary(const history::Summary &summary, SummaryOf what)
{
    m_recovery.reset();
    m_summary.reset();
    if (isWorthTelling(summary))
        m_summary = summary;
    m_summaryOf = what;
    refresh();
}

void aviso::showRecovery(const history::Recovery &recovery)
{
    m_recovery = recovery;
    refresh();
}

void aviso::showUnsaved(const QString &path)
{
    m_unsaved = path;
    refresh();
}

void aviso::showOffer(bool isOffered)
{
    m_isOffered = isOffered;
    refresh();
}

QString aviso::text() const
{
    QStringList parts;
    if (m_summary)
        parts << noticeText(m_captions, *m_summary, m_summaryOf);
    if (const QString recovered = m_recovery ? noticeText(m_captions, *m_recovery) : QString(); !recovered.isEmpty())
        parts << recovered;
    if (!m_unsaved.isEmpty())
        parts << m_captions.text(Text::NoticeUnsaved).arg(shownName(platform::nameOf(m_unsaved)));
    if (m_isOffered)
        parts << m_captions.text(Text::NoticeProtection);
    return parts.join(QStringLiteral(" · "));
}

void aviso::refresh()
{
    const QString now = text();
    m_label->setFullText(now);
    if (accessibleName() != now)
        setAccessibleName(now); // tells assistive tools that the name has changed
    m_details->setVisible(m_summary.has_value());
    m_undo->setVisible(
        m_summary && m_summaryOf == SummaryOf::Change && m_summary->entry.id != 0 && !m_summary->problem);
    m_putBack->setVisible(!m_unsaved.isEmpty());
    m_choose->setVisible(m_isOffered);
    setVisible(!now.isEmpty());
}

void aviso::applyCaptions()
{
    m_details->setText(m_captions.text(Text::NoticeDetails));
    m_details->setToolTip(m_captions.text(Text::TipNoticeDetails));
    m_undo->setText(m_captions.text(Text::CommandUndo));
    m_putBack->setText(m_captions.text(Text::NoticePutBack));
    m_putBack->setToolTip(m_captions.text(Text::TipNoticePutBack));
    m_choose->setText(m_captions.text(Text::NoticeChoose));
    m_close->setToolTip(m_captions.text(Text::NoticeClose));
    m_close->setAccessibleName(m_captions.text(Text::NoticeClose));
    refresh();
}

void aviso::applyIcons()
{
    m_undo->setIcon(themedIcon(QStringLiteral("undo-2"), palette()));
    m_close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton, nullptr, this));
}

void aviso::changeEvent(QEvent *event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        applyIcons();
}

} // namespace ravlin
