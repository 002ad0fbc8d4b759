#pragma once

#include <QObject>

namespace mossbit {

/// Lets the main loop hear of the signals that ask a process to end: SIGTERM, SIGINT, SIGHUP.
/// One at a time; they have their usual effect again once it is gone.
class EndSignals : public QObject {
    Q_OBJECT

public:
    EndSignals();
    ~EndSignals() override;

Q_SIGNALS:
    void received();
};

} // namespace mossbit
