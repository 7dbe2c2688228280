// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/cddbdialogue.h"

#include <QEventLoop>

namespace ravlin::cli {

CddbDialogue::CddbDialogue()
{
    // In the C locale, where many scripts run, Qt would complain about it on standard error.
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    m_application = std::make_unique<QCoreApplication>(m_argumentCount, m_arguments);
    qInstallMessageHandler(before);
    m_freedb = std::make_unique<uFREEDB>();
}

CddbDialogue::~CddbDialogue() = default;

CddbDialogue::Ending CddbDialogue::wait(const std::function<void(uFREEDB &)> &begin)
{
    QEventLoop loop;
    Ending ending = Ending::Failed;
    const auto endWith = [&loop, &ending](Ending how) {
        ending = how;
        loop.quit();
    };
    QObject::connect(m_freedb.get(), &uFREEDB::notFound, &loop, [&] { endWith(Ending::NotFound); });
    QObject::connect(m_freedb.get(), &uFREEDB::choiceOffered, &loop, [&] { endWith(Ending::ChoiceOffered); });
    QObject::connect(m_freedb.get(), &uFREEDB::recordRead, &loop, [&] { endWith(Ending::RecordRead); });
    QObject::connect(m_freedb.get(), &uFREEDB::failed, &loop, [&](const LookupFailure &failure) {
        m_failure = failure;
        endWith(Ending::Failed);
    });
    begin(*m_freedb);
    loop.exec();
    return ending;
}

} // namespace ravlin::cli
