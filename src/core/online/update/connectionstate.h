// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/web/webget.h"

#include <QString>

#include <vector>

namespace ravlin {

/// State of a connection, with the number that the program shows for it.
enum class ConnectionState
{
    None = 0,
    LookingUpHost = 1,
    HostFound = 2,
    Connecting = 3,
    Connected = 4,
    SendingRequest = 5,
    RequestSent = 6,
    ReceivingResponse = 7,
    ResponseReceived = 8,
    Disconnecting = 9,
    Disconnected = 10,
    Failed = 11,
    ResponseComplete = 12, ///< content can be read
};

/// The text of a state, the same in every language; empty for ResponseComplete, which has more than one text.
QString connectionStateText(ConnectionState state);

/// The states passed since the step before, in order.
std::vector<ConnectionState> statesOf(WebStep step);

} // namespace ravlin
