// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/outlookhint.h"

#include "core/app/idiomas.h"
#include "core/app/pageowner.h"
#include "ui/controls/plain/plainlabel.h"

#include <QEvent>
#include <QFont>
#include <QWidget>

#include <utility>

namespace ravlin {

namespace {

constexpr std::chrono::milliseconds Delay(150);

} // namespace

OutlookHint::OutlookHint(const PageContext &context, std::function<Save()> asked, QWidget *page)
    : QObject(page), m_context(context), m_asked(std::move(asked)), m_page(page), m_reader(context.fileSystem)
{
    page->installEventFilter(this);
    m_delay.setSingleShot(true);
    m_delay.setInterval(Delay);
    connect(&m_delay, &QTimer::timeout, this, &OutlookHint::look);
    connect(&m_reader, &OutlookReader::ready, this, &OutlookHint::take);
}

void OutlookHint::refresh()
{
    m_delay.start();
}

void OutlookHint::stop()
{
    m_delay.stop();
    m_reader.cancel();
}

bool OutlookHint::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show)
        refresh();
    return QObject::eventFilter(watched, event);
}

void OutlookHint::look()
{
    if (!m_page->isVisible())
        return;
    const Save save = m_asked();
    m_isOneFile = save.paths.size() == 1;
    m_reader.request(m_context.state, save.paths, save.prepare);
}

void OutlookHint::take(const SaveOutlook &outlook)
{
    if (std::exchange(m_outlook, outlook) != outlook)
        Q_EMIT changed();
}

void OutlookHint::showIn(PlainLabel &label, const QString &hint) const
{
    label.setText(hint);
    QFont font = label.font();
    font.setBold(m_context.owner.selectedCount() > 1 && !hint.isEmpty());
    label.setFont(font);
}

QString OutlookHint::behind(const QString &hint) const
{
    const QString text = outlookText(m_context.captions, m_outlook, m_isOneFile);
    return hint.isEmpty() || text.isEmpty() ? hint + text : hint + m_context.captions.mark(u';') + u' ' + text;
}

} // namespace ravlin
