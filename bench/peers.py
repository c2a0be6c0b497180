#!/usr/bin/env python3
"""The driver's figures beside those of what one would use instead, measured in the same minutes.

Runs in the sandbox only (./dev bench --peers): BUILD is the build folder with the benchmarks, PEERS
a folder with the peers' unpacked packages, JSON the file that receives the rows. The table goes to
standard output, progress to standard error.
"""
import datetime
import glob
import json
import os
import platform
import resource
import socket
import statistics
import subprocess
import sys
import time
import urllib.request

PING_TARGET = "223.5.5.5"  # what the reach check asks: network/NerworkCheck.cpp
GOOD = "127.0.0.20"
SILENT = ["127.0.0.31", "127.0.0.32", "127.0.0.33"]
READINGS = 200
REPEATS = 5
LOG = "/storage/log/restart.log"
IDLE_SECONDS = 60
IDLE_PERIOD = 10  # everybody reads once in so many seconds

build, peers = (os.path.abspath(folder) for folder in sys.argv[1:3])
rows = []


def say(text):
    print("peers: " + text, file=sys.stderr, flush=True)


def row(what, unit, ours, **others):
    """One line of the table; a peer's figure is None where it could not be measured."""
    rows.append({"what": what, "unit": unit, "ours": ours, "peers": others})


def peer(path):
    return os.path.join(peers, path)


class Daemon:
    """A process that runs until the end of the block."""

    def __init__(self, *command, **options):
        self.process = subprocess.Popen(command, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                        **options)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()

    def _tasks(self, name):
        for path in glob.glob(f"/proc/{self.process.pid}/task/*/{name}"):
            with open(path, encoding="ascii", errors="replace") as file:
                yield file.read()

    def cpu_ms(self):
        """Of all its threads; exact, where the counters of /proc/PID/stat know 10 ms."""
        return sum(int(text.split()[0]) for text in self._tasks("schedstat")) / 1e6

    def switches(self):
        return sum(int(line.split()[1]) for text in self._tasks("status")
                   for line in text.splitlines() if line.startswith("voluntary"))

    def memory_kib(self):
        """Resident, and of it the pages that are the process's own."""
        with open(f"/proc/{self.process.pid}/status", encoding="ascii") as file:
            fields = dict(line.split(":", 1) for line in file)
        return int(fields["VmRSS"].split()[0]), int(fields["RssAnon"].split()[0])


def exporter():
    return Daemon(peer("usr/bin/prometheus-node-exporter"), "--collector.disable-defaults",
                  *("--collector." + name for name in
                    ("cpu", "meminfo", "filesystem", "diskstats", "netdev")),
                  "--web.disable-exporter-metrics", "--web.listen-address=127.0.0.1:9100")


def scrape():
    with urllib.request.urlopen("http://127.0.0.1:9100/metrics", timeout=10) as answer:
        return len(answer.read())


def collectd(interval):
    plugins = "\n".join("LoadPlugin " + name for name in
                        ("cpu", "memory", "df", "disk", "interface"))
    with open("/tmp/collectd.conf", "w", encoding="ascii") as file:
        file.write(f'PluginDir "{peer("usr/lib/collectd")}"\nTypesDB "{peer("usr/share/collectd/types.db")}"\n'
                   f'BaseDir "/tmp"\nPIDFile "/tmp/collectd.pid"\nInterval {interval}\n{plugins}\n')
    return Daemon(peer("usr/sbin/collectd"), "-f", "-C", "/tmp/collectd.conf")


def wait_for(works, what):
    for _ in range(100):
        try:
            if works():
                return
        except OSError:
            pass
        time.sleep(0.1)
    sys.exit(f"peers: {what} does not start")


def command_cpu_ms(times, *command):
    """CPU of one run, its start included."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    for _ in range(times):
        subprocess.run(command, stdout=subprocess.DEVNULL, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return (after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime) * 1000 / times


def bench(pattern, **environment):
    """The benchmarks whose name matches, by name; repeated ones as a list in their order."""
    result = subprocess.run(
        [build + "/bin/hxdcontrol_bench", "--benchmark_filter=" + pattern,
         "--benchmark_format=json"],
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True,
        env=dict(os.environ, **environment))
    runs = {}
    for run in json.loads(result.stdout)["benchmarks"]:
        if run.get("error_occurred"):
            sys.exit(f"peers: {run['name']}: {run['error_message']}")
        if run["run_type"] == "iteration":
            runs.setdefault(run["run_name"].split("/iterations")[0].split("/process_time")[0],
                            []).append(run)
    return runs


TO_MS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0}


def cpu_ms(runs, name):
    run = runs[name][0]
    return run["cpu_time"] * TO_MS[run["time_unit"]]


def full_reading():
    say("full readings")
    ours = bench("refresh/(warm|bare)")
    with exporter() as process:
        wait_for(scrape, "node_exporter")
        for _ in range(20):
            scrape()
        before = process.cpu_ms()
        for _ in range(READINGS):
            scrape()
        scraped = (process.cpu_ms() - before) / READINGS
    interval = 0.1
    with collectd(interval) as process:
        time.sleep(2)
        before = process.cpu_ms()
        time.sleep(READINGS * interval)
        collected = (process.cpu_ms() - before) / READINGS
    others = {"node_exporter": scraped, "collectd": collected,
              "vmstat (a process)": command_cpu_ms(READINGS, "vmstat")}
    for storage in ("emmc", "nand"):
        row(f"full reading, {storage}: CPU", "ms", cpu_ms(ours, "refresh/warm/" + storage),
            **{"bare system calls": cpu_ms(ours, "refresh/bare_calls/" + storage)}, **others)


def sha256():
    say("SHA-256")
    ours = bench("sha256")
    path = "/tmp/sha256"
    for size, name in ((64, "64 B"), (1 << 20, "1 MiB")):
        with open(path, "wb") as file:
            file.write(b"Z" * size)
        row(f"SHA-256 of {name}: CPU", "us", cpu_ms(ours, f"sha256/own/{size}") * 1e3,
            **{"OpenSSL, scalar": cpu_ms(ours, f"sha256/openssl_scalar/{size}") * 1e3,
               "sha256sum (a process)": command_cpu_ms(50, "sha256sum", path) * 1e3})
    os.unlink(path)


def log_tail():
    say("log")
    ours = bench("log/")
    row("newest 64 KiB of a log of 48 MiB: CPU", "ms", cpu_ms(ours, "log/newest_64_kib_of_48_mib"),
        **{"one read() of it": cpu_ms(ours, "log/one_read_of_48_mib"),
           "tail -c (a process)": command_cpu_ms(50, "tail", "-c", "65536", LOG)})


def elapsed_ms(*command, env=None):
    begin = time.monotonic()
    code = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                          check=False, env=env).returncode
    return (time.monotonic() - begin) * 1000 if code == 0 else None


def in_a_row(*command, env=None):
    times = [elapsed_ms(*command, env=env) for _ in range(REPEATS)]
    return None if None in times else statistics.median(times)


def time_clients(what, servers):
    """Elapsed time until the clock can be set, the median of some runs."""
    with open("/tmp/client.conf", "w", encoding="ascii") as file:
        file.writelines(f"server {server} iburst maxsamples 1\n" for server in servers)
        file.write("pidfile /tmp/client.pid\ncmdport 0\nbindcmdaddress /\n")
    others = {
        "chronyd -Q": in_a_row("chronyd", "-Q", "-t", "20", "-u", "root", "-f", "/tmp/client.conf"),
        "ntpdig": in_a_row("python3", peer("usr/bin/ntpdig"), *servers, env=dict(
            os.environ, PYTHONPATH=peer("usr/lib/python3/dist-packages")))}
    ours = bench("ntp/", HXD_BENCH_TIME_SERVERS=",".join((servers + [""] * 4)[:4]))
    for rounds in (1, 2, 5):
        times = [run["real_time"] for run in ours[f"ntp/exec_in_row/{rounds}"]]
        order = "first" if rounds == 1 else f"{rounds}th in a row".replace("2th", "2nd")
        row(f"ExecNTP, {what}, {order}: elapsed", "ms", statistics.median(times), **others)


def exec_ntp():
    subprocess.run(["ip", "addr", "add", PING_TARGET + "/32", "dev", "lo"], check=True)
    with open("/tmp/good.conf", "w", encoding="ascii") as file:
        file.write(f"local stratum 1\nallow all\ncmdport 0\nbindcmdaddress /\nbindaddress {GOOD}\n"
                   "pidfile /tmp/good.pid\n")
    silent = []
    for address in SILENT:
        silent.append(socket.socket(socket.AF_INET, socket.SOCK_DGRAM))
        silent[-1].bind((address, 123))
    with Daemon("chronyd", "-x", "-d", "-u", "root", "-f", "/tmp/good.conf"):
        wait_for(lambda: os.path.exists("/tmp/good.pid"), "chronyd")
        say("time clients, one good server")
        time_clients("one good server", [GOOD])
        say("time clients, three silent servers and a good one")
        time_clients("three silent and one good", SILENT + [GOOD])
    for one in silent:
        one.close()


def idle():
    say(f"a minute of hardly anything, each reads every {IDLE_PERIOD} s")
    bench("refresh/bare_calls/emmc")  # leaves the files of such a panel
    start = [build + "/bin/hxdcontrol_start", build + "/lib/libhxdcontrol_armv7.so.1"]
    added = subprocess.run(start, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True)
    resident, private = (int(field) for field in added.stdout.split()[1:3])
    with Daemon(*start, str(IDLE_PERIOD)) as host, exporter() as exported, \
            collectd(IDLE_PERIOD) as collected:
        names = {"node_exporter": exported, "collectd": collected}
        wait_for(scrape, "node_exporter")
        time.sleep(5)
        everyone = [host, *names.values()]
        before = [(process.cpu_ms(), process.switches()) for process in everyone]
        for _ in range(IDLE_SECONDS // IDLE_PERIOD):
            time.sleep(IDLE_PERIOD)
            scrape()
        cpu = [process.cpu_ms() - start[0] for process, start in zip(everyone, before)]
        switches = [process.switches() - start[1] for process, start in zip(everyone, before)]
        memory = [process.memory_kib() for process in names.values()]
    row("memory added to the host, resident", "KiB", resident,
        **dict(zip(names, (one[0] for one in memory))))
    row("of it private", "KiB", private, **dict(zip(names, (one[1] for one in memory))))
    row("idle minute: CPU", "ms", cpu[0], **dict(zip(names, cpu[1:])))
    row("idle minute: voluntary switches", "", switches[0], **dict(zip(names, switches[1:])))


def figure(value):
    if value is None:
        return "fails"
    return f"{value:.0f}" if value >= 100 else f"{value:.3g}"


def print_table(machine):
    print(f"{machine['date']}, {machine['processor']}, {machine['cores']} cores, "
          f"Linux {machine['kernel']}, load {machine['load']}\n")
    print("| | unit | ours | beside it (times ours) |\n|---|---|---|---|")
    for one in rows:
        beside = ", ".join(
            f"{name} {figure(value)}" + (f" ({figure(value / one['ours'])})" if value else "")
            for name, value in one["peers"].items())
        print(f"| {one['what']} | {one['unit']} | {figure(one['ours'])} | {beside} |")


def main():
    if not os.path.exists("/run/hxd-panel"):
        sys.exit("peers: runs in the sandbox only: ./dev bench --peers")
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        model = next((line.split(":", 1)[1].strip() for line in file
                      if line.startswith("model name")), platform.machine())
    machine = {"date": datetime.date.today().isoformat(), "processor": model,
               "cores": os.cpu_count(), "kernel": platform.release(),
               "load": f"{os.getloadavg()[0]:.1f}"}
    for measure in (full_reading, sha256, log_tail, exec_ntp, idle):
        measure()
    with open(sys.argv[3], "w", encoding="utf-8") as file:
        json.dump({"machine": machine, "rows": rows}, file, indent=1)
    print_table(machine)


main()
