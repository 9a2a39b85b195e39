// SPDX-License-Identifier: Apache-2.0
#pragma once

class QVBoxLayout;

namespace ostrel {

class RemoteServer;

/// Draws the server tab into the body, `width` points wide. What is typed goes to the server's state at once,
/// without a drawing. The server must outlive the body. Main thread.
void renderServer(QVBoxLayout& body, RemoteServer& server, int width);

} // namespace ostrel
