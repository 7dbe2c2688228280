// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QDialog>
#include <QUrl>

#include <functional>

class QLabel;
class QPushButton;

namespace ravlin {

class Captions;
class LinkButton;

/// The about box: the program's version, its makers, where to find and to write to them, and the libraries that it is
/// made with. It opens the user guide where that is installed. It hands addresses to the system; what the system makes
/// of them is not checked.
class frmAbout : public QDialog
{
    Q_OBJECT

public:
    /// Asks the system to open an address: a web page, a page of the guide, or a message in the mail program.
    using OpenAddress = std::function<void(const QUrl &)>;
    /// QDesktopServices::openUrl.
    static void openBySystem(const QUrl &address);

    /// programFolder: from where the guide is looked for.
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
    QLabel *m_name = nullptr; ///< programName
    QLabel *lblVersion = nullptr;
    QLabel *lblDisclaimer = nullptr;
    LinkButton *Label1 = nullptr;
    LinkButton *Label2 = nullptr;
    QLabel *Label3 = nullptr;
    QLabel *m_libraries = nullptr;  ///< libraries
    QString m_guidePage;            ///< empty: there is none
    QPushButton *m_guide = nullptr; ///< guide
    QPushButton *Pic = nullptr;
    QPushButton *Picture1 = nullptr;
    QPushButton *cmdOK = nullptr;
};

} // namespace ravlin
