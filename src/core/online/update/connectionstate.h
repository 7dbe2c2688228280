// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/web/webget.h"

#include <QString>

#include <vector>

namespace ravlin {

/// What a connection is at, by the numbers that it is told with.
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
    ResponseComplete = 12, ///< its content can be read
};

/// What is shown of a state, the same in every language; empty for ResponseComplete, which has more than one text.
QString connectionStateText(ConnectionState state);

/// The states that lie behind a fetch when it has got to that step since the one before, in order.
std::vector<ConnectionState> statesOf(WebStep step);

} // namespace ravlin
