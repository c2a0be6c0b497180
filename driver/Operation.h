// One call of the host into a device object, and the host's own turns within it.
#ifndef HXD_OPERATION_H
#define HXD_OPERATION_H

class IDeviceCtrl;

namespace hxd {

// Lives while the operation runs, on its stack. Meanwhile
// - the thread is not cancelled, except in the host's own code: nothing in here, Qt least of all,
//   could be left in the middle. A cancellation waits until the operation has returned;
// - a release of the object that the host asks for from within waits for the end of the outermost
//   operation of that object.
class Operation {
public:
    enum Release { NONE, CLEANUP, DESTROY };

    explicit Operation(IDeviceCtrl& device);
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation();

    // True when this thread is inside an operation of the device, which then does it at its end.
    static bool Postpone(const IDeviceCtrl& device, Release release);
    // True when the device will be released at the end of what this thread is inside of.
    static bool IsPostponed(const IDeviceCtrl& device);

private:
    friend class HostTurn;
    static Operation* Outermost(const IDeviceCtrl& device);

    IDeviceCtrl& m_device;
    Operation* const m_pOuter;  // of any device, of the same thread
    int m_nCancelState;         // the host's
    Release m_eRelease = NONE;
};

// Lives while the host is being called back: its code may be cancelled as it wishes, and may end
// the thread.
class HostTurn {
public:
    HostTurn();
    HostTurn(const HostTurn&) = delete;
    HostTurn& operator=(const HostTurn&) = delete;
    ~HostTurn();
};

}  // namespace hxd

#endif
