#include "SimPanel.h"
bool sim::SimPanel::loadIni(const std::string&, std::string&) { return false; }
