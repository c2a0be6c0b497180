// Can time servers be reached? Asked before a synchronisation, so that an unplugged panel does not
// wait for answers.
#ifndef HXD_NERWORKCHECK_H
#define HXD_NERWORKCHECK_H

#include <QString>

#include <atomic>

namespace HXDCTRL {
// Held by every process that reads or rewrites the resolver's file. A writer makes the new file
// beside it and renames it.
extern const char* const dnsFileLockPath;  // "/tmp/dns_access_lock.lck"
extern const char* const dnsFilePath;      // "/etc/resolv.conf"
extern const char* const dnsFilePathTmp;   // "/etc/resolv.conf.tmp", left by an interrupted writer
}  // namespace HXDCTRL

// No state of its own; may be used by several threads.
namespace NerworkCheck {

extern const char* const testPingIpAddr;  // a public name server
extern const char* const pingLckPath;     // "/tmp/ping.lock", held around every ping

// True for four decimal numbers 0 to 255 with dots between and nothing else. One leading zero
// before a single digit is let pass.
bool isIp(const QString& text);

// True when one ICMP echo is answered within 2 s. literal: sent to testPingIpAddr, for servers
// given as addresses; otherwise to the first name server of the resolver's file, for servers given
// as names. Any failure gives false. Takes up to 3 s, and 0.4 s more when the resolver's file is
// malformed; waits for other processes' pings besides, as long as they take.
bool pingNetWork(bool literal);

// The same, given up within a quarter of a second, with false, when running becomes false; a ping
// that is under way is killed then.
bool pingNetWork(bool literal, const std::atomic<bool>& running);

}  // namespace NerworkCheck

#endif
