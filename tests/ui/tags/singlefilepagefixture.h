// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/idiomas.h"
#include "core/tags/store/tagstore.h"
#include "support/mp3builder.h"
#include "ui/tags/fakepageowner.h"
#include "ui/tags/singlefilepage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>

#include <memory>

namespace ravlin::test {

/// A single-file page over a list of real files, and short words for its controls.
class SingleFilePageFixture : public QObject
{
protected:
    std::unique_ptr<QTemporaryDir> m_folder;
    ProgramState m_state;
    TagStore m_store{m_state, platform::FileSystem::native()};
    Captions m_captions;
    FakePageOwner m_owner;
    std::unique_ptr<SingleFilePage> m_page;

    /// A file of that name, which becomes the list's last row.
    QString addFile(const QString &name, const QByteArray &content = audio())
    {
        const QString path = writeFile(m_folder->path(), name, content);
        m_owner.rows << path;
        return path;
    }
    TagRecord read(const QString &path) const
    {
        TagRecord record;
        (void)m_store.ReadTag(path, record);
        return record;
    }
    template <typename Control>
    Control *control(const char *name) const
    {
        auto *found = m_page->findChild<Control *>(QLatin1String(name));
        if (!found)
            qFatal("no control %s", name);
        return found;
    }
    QString text(const char *name) const { return control<QLineEdit>(name)->text(); }
    void setText(const char *name, const QString &text) const { control<QLineEdit>(name)->setText(text); }
    QString label(const char *name) const { return control<QLabel>(name)->text(); }
    bool isEnabled(const char *name) const { return control<QWidget>(name)->isEnabled(); }
    void press(const char *name) const { control<QPushButton>(name)->click(); }
    void clickRow(qsizetype row)
    {
        m_owner.click(row);
        m_page->ShowCurrent();
    }
    void convertBy(int entry) const
    {
        control<QCheckBox>("op4_2")->setChecked(true);
        control<QComboBox>("ccase_2")->setCurrentIndex(entry);
    }
    static QByteArray tagged(const QString &title, const QString &artist = {})
    {
        return id3v2(3, textFrame(3, "TIT2", title) + textFrame(3, "TPE1", artist)) + audio();
    }

    /// A new page over an empty list.
    void start()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_state = ProgramState{};
        m_state.freeMegabytes = 100000;
        m_captions = Captions();
        m_captions.fill();
        m_owner = FakePageOwner();
        m_page = std::make_unique<SingleFilePage>(SingleFilePageContext{m_owner, m_state, m_store, m_captions});
    }
};

} // namespace ravlin::test
