// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QDialog>
#include <QUrl>

#include <functional>

class QPushButton;

namespace ravlin {

class Captions;
class PlainLabel;

/// The about box: the program's version, its makers and their addresses, and the libraries it uses. Opens the user
/// guide if that is installed. Hands addresses to the system and ignores what becomes of them.
class frmAbout : public QDialog
{
    Q_OBJECT

public:
    /// Opens an address: a web page, a page of the guide, or a message in the mail program.
    using OpenAddress = std::function<void(const QUrl &)>;
    /// QDesktopServices::openUrl.
    static void openBySystem(const QUrl &address);

    /// programFolder: where the search for the guide starts.
    explicit frmAbout(const Captions &captions, QWidget *parent = nullptr, OpenAddress openAddress = &openBySystem,
        const QString &programFolder = QCoreApplication::applicationDirPath());

protected:
    void changeEvent(QEvent *event) override;

private:
    void createControls();
    void createLayout();
    void connectControls();
    void applyCaptions();
    void applyIcons();

    const Captions &m_captions;
    OpenAddress m_openAddress;
    PlainLabel *m_name = nullptr;
    PlainLabel *m_version = nullptr;
    PlainLabel *m_makers = nullptr;
    QPushButton *m_webSite = nullptr;
    QPushButton *m_mail = nullptr;
    PlainLabel *m_thanks = nullptr;
    PlainLabel *m_libraries = nullptr;
    QString m_guidePage; ///< empty: there is none
    QPushButton *m_guide = nullptr;
    QPushButton *m_tagLibrary = nullptr;
    QPushButton *m_database = nullptr;
    QPushButton *m_ok = nullptr;
};

} // namespace ravlin
