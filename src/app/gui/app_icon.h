#pragma once
// The application's icon, rendered from its vector artwork at the usual
// sizes so that it stays sharp in title bars, task bars and docks.

#include <QIcon>

namespace tunebox::gui {

QIcon appIcon();

}  // namespace tunebox::gui
