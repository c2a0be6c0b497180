// A device record wired to a fake host, for tests below the device object.
#ifndef HXD_TESTS_RECORD_H
#define HXD_TESTS_RECORD_H

#include "FakeHost.h"
#include "SimPanel.h"
#include "driver/CDevCtrl.h"
#include "driver/record/DevContext.h"
#include "driver/record/OlmaData.h"
#include "sysinfo/DevManger.h"

#include <gtest/gtest.h>

// The context has its services absent, as a failed start leaves them; a test adds what it needs.
class RecordTest : public testing::Test {
protected:
    RecordTest() {
        record.m_pParamHost = &host;
        record.m_pRtdb = &host;
        record.m_pContext = &context;
        record.m_pfnGetParamType = CDevCtrl::GetParamType_Fun;
        record.m_pfnGetParamValue = CDevCtrl::GetParamValue_Fun;
        record.m_pfnSetParamValue = CDevCtrl::SetParamValue_Fun;
        record.m_arrValue.SetSize(33);
        record.m_arrStrValue.SetSize(33);
        sim::SimPanel::Instance().Reset();
    }
    ~RecordTest() override { sim::SimPanel::Instance().Reset(); }

    static sim::PanelState Panel() { return sim::SimPanel::Instance().State(); }
    static void ChangePanel(const std::function<void(sim::PanelState&)>& edit) {
        sim::SimPanel::Instance().Change(edit);
    }

    FakeHost host;
    DEV_CONTEXT context;
    OLMA_DATA record{};
};

#endif
