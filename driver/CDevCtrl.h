// The device object: the host's view of one panel.
#ifndef HXD_CDEVCTRL_H
#define HXD_CDEVCTRL_H

#include "driver/record/OlmaData.h"
#include "host.h"

// See IDeviceCtrl for the operations. They work before InitDevice and after CleanupDevice as well:
// collections deliver nothing, commands that need a service give 0. No exception leaves them:
// what cannot be done for lack of memory, or because a host callback throws, gives
// HOST_BAD_ARGUMENT. Counts of channels below 0 count as 0; more than 65,536 are refused.
//
// The record is the only member, and the base without data shares its table pointer, so that the
// record's place in the object is the same for every build.
class CDevCtrl : public virtual IDeviceCtrl {
public:
    // name may be null. host is not owned and may be null.
    CDevCtrl(const char* name, IRtdb* host);
    CDevCtrl(const CDevCtrl&) = delete;
    CDevCtrl& operator=(const CDevCtrl&) = delete;
    ~CDevCtrl() override;  // releases the record only: CleanupDevice first

    int InitDevice(const unsigned char* blob, int length) override;
    int CleanupDevice() override;
    int CollectDevData(const int* channels, int count) override;
    int DevIOCtrl(const char* command) override;
    int WriteChannel(int channel, DATATYPE type, void* value) override;
    int UpdataCommunication(ICommunication* communication) override;
    int ChannelRefChange(const int* channels, int count) override;
    int SetChannelAddress(int first, int second) override;

    // The record's way to the host's parameters. HOST_BAD_ARGUMENT for an empty name, a null
    // pointer or an unknown type; HOST_NO_PARAM_HOST without a host; else the host's status.
    static int GetParamType_Fun(OLMA_DATA& record, CString name, DATATYPE& type);
    static int GetParamValue_Fun(OLMA_DATA& record, CString name, DATATYPE type, void* out);
    static int SetParamValue_Fun(OLMA_DATA& record, CString name, DATATYPE type, void* value);

private:
    void StartDevice(const unsigned char* blob, int length);
    int Collect(const int* channels, int count);
    void RefreshValues();
    void StoreInputLocks();
    void DeliverChannels();
    void AnnounceDevice();
    void RunCommand(CString command);
    int _InitValueArray(int n);
    int Result() const;

    OLMA_DATA m_record;
};

#endif
