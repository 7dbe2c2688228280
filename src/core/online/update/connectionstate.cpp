// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/update/connectionstate.h"

using namespace Qt::StringLiterals;

namespace ravlin {

QString connectionStateText(ConnectionState state)
{
    // Exactly these texts: the blanks and the number of the next state are intended.
    switch (state) {
    case ConnectionState::None:
        return u"no state to report. 1"_s;
    case ConnectionState::LookingUpHost:
        return u"the control is looking up the ip address of the specified host computer.2 "_s;
    case ConnectionState::HostFound:
        return u" the control successfully found the ip address of the specified host computer.3"_s;
    case ConnectionState::Connecting:
        return u" the control is connecting to the host computer.4"_s;
    case ConnectionState::Connected:
        return u" the control successfully connected to the host computer.5"_s;
    case ConnectionState::SendingRequest:
        return u" the control is sending a request to the host computer.6"_s;
    case ConnectionState::RequestSent:
        return u" the control successfully sent the request.7"_s;
    case ConnectionState::ReceivingResponse:
        return u" the control is receiving a response from the host computer.8"_s;
    case ConnectionState::ResponseReceived:
        return u" the control successfully received a response from the host computer.9"_s;
    case ConnectionState::Disconnecting:
        return u" the control is disconnecting from the host computer.10"_s;
    case ConnectionState::Disconnected:
        return u" the control successfully disconnected from the host computer.11"_s;
    case ConnectionState::Failed:
        return u" an error occurred in communicating with the host computer.12"_s;
    case ConnectionState::ResponseComplete:
        return {};
    }
    Q_UNREACHABLE();
    return {};
}

std::vector<ConnectionState> statesOf(WebStep step)
{
    switch (step) {
    case WebStep::LookingUp:
        return {ConnectionState::LookingUpHost};
    case WebStep::Connecting:
        return {ConnectionState::HostFound, ConnectionState::Connecting};
    case WebStep::RequestSent:
        return {ConnectionState::Connected, ConnectionState::SendingRequest, ConnectionState::RequestSent};
    case WebStep::Answering:
        return {
            ConnectionState::ReceivingResponse, ConnectionState::ResponseReceived, ConnectionState::ResponseComplete};
    }
    Q_UNREACHABLE();
    return {};
}

} // namespace ravlin
