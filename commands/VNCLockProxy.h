// The input locks of the panel: its own mouse and keyboard (HMI) and those of the remote session
// (VNC), which a plug-in object of the host's Qt application enforces.
#ifndef HXD_VNCLOCKPROXY_H
#define HXD_VNCLOCKPROXY_H

#include "host.h"

#include <QObject>
#include <QPointer>

#include <memory>

// The same in the plug-in: the name of the interface is what the two agree on.
Q_DECLARE_INTERFACE(IVNCLock, IVNCLock_iid)

// Forwards to the plug-in and outlives it harmlessly: without one, setters do nothing and getters
// return false. Every operation may be called from any thread while the plug-in object lives; the
// host destroys the object only when no device call is under way.
class VNCLockProxy : public QObject, public IVNCLock {
    Q_OBJECT
    Q_INTERFACES(IVNCLock)

public:
    explicit VNCLockProxy(QObject* plugin);  // not owned; may be null
    ~VNCLockProxy() override;                // releases the four locks: nothing stays locked

    void setHMIMouseState(bool locked) override;
    bool getHMIMouseState() const override;
    void setVNCMouseState(bool locked) override;
    bool getVNCMouseState() const override;
    void setHMIKeyboardState(bool locked) override;
    bool getHMIKeyboardState() const override;
    void setVNCKeyboardState(bool locked) override;
    bool getVNCKeyboardState() const override;

    void ReleaseLocks();

private:
    IVNCLock* Target() const;

    QPointer<QObject> m_pPlugin;
};

// A proxy for the plug-in object among the application's children, with all locks released; says on
// standard output when there is none, or when it does not offer the interface. Never null.
std::unique_ptr<VNCLockProxy> MakeVncLockProxy();

#endif
