// The host runtime's device-driver interface: what a driver offers, and what the host offers it.
//
// These are abstract classes called through their virtual tables, so the order of the operations is
// part of the interface: never reorder, insert or remove one.
#ifndef HOST_H
#define HOST_H

#include <string>

// Type of a host value. Other numbers may turn up at run time and mean "not supported".
enum DATATYPE : int {
    DATATYPE_INTEGER = 1,  // int
    DATATYPE_DOUBLE = 2,   // double
    DATATYPE_TEXT = 3,     // std::string or CString, as the operation says
};

// 32-bit status codes of the host interface; others are a command's own result.
enum HOST_STATUS : int {
    HOST_OK = 0,
    HOST_NO_PARAM_HOST = static_cast<int>(0x80000000u),  // the record has no parameter host
    HOST_BAD_ARGUMENT = static_cast<int>(0x80000001u),
    HOST_NO_CHANNEL_HOST = -3,  // no host object to deliver channel values to
};

// The host's data objects, by name (parameters) and by 0-based index (channels). Every operation
// returns 0 when done. The host owns the object and keeps it alive as long as the device exists.
//
// A driver calls them inside an operation of IDeviceCtrl, on the host's thread. They may throw (the
// operation then gives HOST_BAD_ARGUMENT), be cancelled, end the thread, and call operations of any
// device; see IDeviceCtrl for a release from within. They must not wait for another thread that is
// inside the driver: commands and writes of all devices wait for each other.
class IRtdb {
public:
    virtual int GetParamType(const char* name, DATATYPE* type) = 0;
    virtual int GetParamInt(const char* name, int* value) = 0;
    virtual int GetParamDouble(const char* name, double* value) = 0;
    virtual int GetParamString(const char* name, std::string* value) = 0;
    virtual int SetParamInt(const char* name, int value) = 0;
    virtual int SetParamDouble(const char* name, double value) = 0;
    virtual int SetParamString(const char* name, const std::string* value) = 0;
    virtual int GetChannelType(int channel, int* type) = 0;
    virtual int ReservedSlot9() = 0;  // slots 9 to 11 are the host's; drivers never call them
    virtual int ReservedSlot10() = 0;
    virtual int ReservedSlot11() = 0;
    virtual int SetChannelInt(int channel, int value) = 0;
    virtual int SetChannelDouble(int channel, double value) = 0;
    virtual int SetChannelString(int channel, const std::string* value) = 0;

protected:
    // Not virtual: a virtual destructor would shift the slots above.
    ~IRtdb() = default;
};

// The link over which the host talks to a device. Only slots 16 and 17 concern a driver.
class ICommunication {
public:
    virtual int ReservedSlot1() = 0;
    virtual int ReservedSlot2() = 0;
    virtual int ReservedSlot3() = 0;
    virtual int ReservedSlot4() = 0;
    virtual int ReservedSlot5() = 0;
    virtual int ReservedSlot6() = 0;
    virtual int ReservedSlot7() = 0;
    virtual int ReservedSlot8() = 0;
    virtual int ReservedSlot9() = 0;
    virtual int ReservedSlot10() = 0;
    virtual int ReservedSlot11() = 0;
    virtual int ReservedSlot12() = 0;
    virtual int ReservedSlot13() = 0;
    virtual int ReservedSlot14() = 0;
    virtual int ReservedSlot15() = 0;
    virtual int SetDeviceName(char* name) = 0;  // called before every collection, write and command
    virtual int GetLinkType() = 0;              // 1 or 2

protected:
    ~ICommunication() = default;
};

// One device of a driver. Made by CreateDeviceCtrl, released by DestroyDeviceCtrl. One object must
// not be entered from two threads at once; no operation throws. A thread that is cancelled inside
// an operation, but not in a callback, ends only when the operation has returned.
//
// From within a callback every operation may be called on the same object again, except that
// CleanupDevice and DestroyDeviceCtrl are only noted (0) and done when the outermost operation of
// the object returns; until then InitDevice gives HOST_BAD_ARGUMENT.
class IDeviceCtrl {
public:
    // Reads the device's configuration and starts the services. A second call changes nothing.
    virtual int InitDevice(const unsigned char* blob, int length) = 0;
    // Stops and releases everything that InitDevice started. Harmless when nothing was started.
    // Takes a moment, at most 3.5 s, as long as the panel is well: a platform call, a shell
    // command, a read in /sys, a sync() or a print that is under way is waited for, and nothing
    // bounds one that hangs.
    virtual int CleanupDevice() = 0;
    // Brings the channel values up to date and delivers them through IRtdb::SetChannel*.
    virtual int CollectDevData(const int* channels, int count) = 0;
    // Runs a command text, "NAME(ARGUMENTS)", and returns its status number.
    virtual int DevIOCtrl(const char* command) = 0;
    // channel: 0-based; value: int*, double* or char* as type says. Returns the write's status.
    virtual int WriteChannel(int channel, DATATYPE type, void* value) = 0;
    // The host keeps ownership and keeps the object alive until the next call.
    virtual int UpdataCommunication(ICommunication* communication) = 0;
    virtual int ChannelRefChange(const int* channels, int count) = 0;
    virtual int SetChannelAddress(int first, int second) = 0;
    virtual ~IDeviceCtrl() = default;
};

// Interface of the remote-view plug-in, found by the Qt meta-object cast with IVNCLock_iid on the
// application's child object named "olma.vnc.lock". true = input locked. Safe from any thread.
class IVNCLock {
public:
    virtual ~IVNCLock() = default;
    virtual void setHMIMouseState(bool locked) = 0;
    virtual bool getHMIMouseState() const = 0;
    virtual void setVNCMouseState(bool locked) = 0;
    virtual bool getVNCMouseState() const = 0;
    virtual void setHMIKeyboardState(bool locked) = 0;
    virtual bool getHMIKeyboardState() const = 0;
    virtual void setVNCKeyboardState(bool locked) = 0;
    virtual bool getVNCKeyboardState() const = 0;
};

#define IVNCLock_iid "olma.vnc.lock.interface/1.0"

// What a driver library exports.
extern "C" {
// name may be null (empty name). Returns null only when memory is exhausted.
IDeviceCtrl* CreateDeviceCtrl(const char* name, IRtdb* host);
// 1 for null, otherwise 0, also when the object is not one of this driver's (nothing is released).
int DestroyDeviceCtrl(IDeviceCtrl* device);
}

#endif
