// The remote-view plug-in of the host's Qt application: it would block the input devices, here it
// shows their states.
#ifndef HXDPANEL_LOCKPLUGIN_H
#define HXDPANEL_LOCKPLUGIN_H

#include "host.h"

#include <QObject>

#include <atomic>

Q_DECLARE_INTERFACE(IVNCLock, IVNCLock_iid)

class LockPlugin : public QObject, public IVNCLock {
    Q_OBJECT
    Q_INTERFACES(IVNCLock)

public:
    explicit LockPlugin(QObject* application) : QObject(application) {
        setObjectName(QLatin1String("olma.vnc.lock"));
    }

    void setHMIMouseState(bool locked) override { m_bHmiMouse = locked; }
    bool getHMIMouseState() const override { return m_bHmiMouse; }
    void setVNCMouseState(bool locked) override { m_bVncMouse = locked; }
    bool getVNCMouseState() const override { return m_bVncMouse; }
    void setHMIKeyboardState(bool locked) override { m_bHmiKeyboard = locked; }
    bool getHMIKeyboardState() const override { return m_bHmiKeyboard; }
    void setVNCKeyboardState(bool locked) override { m_bVncKeyboard = locked; }
    bool getVNCKeyboardState() const override { return m_bVncKeyboard; }

private:
    std::atomic<bool> m_bHmiMouse{false};
    std::atomic<bool> m_bVncMouse{false};
    std::atomic<bool> m_bHmiKeyboard{false};
    std::atomic<bool> m_bVncKeyboard{false};
};

#endif
