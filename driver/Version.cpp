// The version in the library's file, for `strings` and hxdcheck; "@(#)" is how they find it.
#include "HxdVersion.h"

#include <QtGlobal>

namespace {

__attribute__((used)) const char VERSION[] = "@(#) " HXD_VERSION_TEXT ", Qt " QT_VERSION_STR;

}  // namespace
