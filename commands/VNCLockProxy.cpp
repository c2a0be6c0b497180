#include "commands/VNCLockProxy.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

QObject* FindPlugin() {
    QCoreApplication* const application = QCoreApplication::instance();
    if (application == nullptr)
        return nullptr;
    return application->findChild<QObject*>(QLatin1String("olma.vnc.lock"));
}

}  // namespace

VNCLockProxy::VNCLockProxy(QObject* plugin) : m_pPlugin(plugin) {}

VNCLockProxy::~VNCLockProxy() {
    try {
        ReleaseLocks();
    } catch (...) {
        // A plug-in that throws keeps what it has not released; the host goes on.
    }
}

// Asked anew each time: a plug-in object that is being destroyed no longer offers the interface.
IVNCLock* VNCLockProxy::Target() const {
    return qobject_cast<IVNCLock*>(m_pPlugin.data());
}

void VNCLockProxy::ReleaseLocks() {
    VNCLockProxy::setHMIMouseState(false);
    VNCLockProxy::setHMIKeyboardState(false);
    VNCLockProxy::setVNCMouseState(false);
    VNCLockProxy::setVNCKeyboardState(false);
}

void VNCLockProxy::setHMIMouseState(bool locked) {
    if (IVNCLock* const target = Target())
        target->setHMIMouseState(locked);
}

bool VNCLockProxy::getHMIMouseState() const {
    const IVNCLock* const target = Target();
    return target != nullptr && target->getHMIMouseState();
}

void VNCLockProxy::setVNCMouseState(bool locked) {
    if (IVNCLock* const target = Target())
        target->setVNCMouseState(locked);
}

bool VNCLockProxy::getVNCMouseState() const {
    const IVNCLock* const target = Target();
    return target != nullptr && target->getVNCMouseState();
}

void VNCLockProxy::setHMIKeyboardState(bool locked) {
    if (IVNCLock* const target = Target())
        target->setHMIKeyboardState(locked);
}

bool VNCLockProxy::getHMIKeyboardState() const {
    const IVNCLock* const target = Target();
    return target != nullptr && target->getHMIKeyboardState();
}

void VNCLockProxy::setVNCKeyboardState(bool locked) {
    if (IVNCLock* const target = Target())
        target->setVNCKeyboardState(locked);
}

bool VNCLockProxy::getVNCKeyboardState() const {
    const IVNCLock* const target = Target();
    return target != nullptr && target->getVNCKeyboardState();
}

std::unique_ptr<VNCLockProxy> MakeVncLockProxy() {
    QObject* const plugin = FindPlugin();
    if (plugin == nullptr) {
        std::puts("Qt VNC plugin doesn't support lock");
    } else if (qobject_cast<IVNCLock*>(plugin) == nullptr) {
        std::puts("Qt VNC plugin doesn't implement IVNCLock interface");
    }
    std::unique_ptr<VNCLockProxy> proxy(new VNCLockProxy(plugin));
    proxy->ReleaseLocks();
    return proxy;
}
