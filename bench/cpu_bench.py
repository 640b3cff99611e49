#!/usr/bin/env python3
"""CPU use and key latency of the running player, each beside a plain SDL
peer doing the same, in the same run. Run by "./kovani bench" under Xvfb.

    cpu_bench.py APP_DIR BENCH_DIR DEVICE_ROOT
"""
import os
import shutil
import statistics
import subprocess
import sys
import time

APP, BENCH, DEVICE = sys.argv[1:4]
TICK = os.sysconf("SC_CLK_TCK")
SECONDS = 10
RUNS = int(os.environ.get("BENCH_RUNS", "3"))


def cpu_seconds(pid):
    with open(f"/proc/{pid}/stat") as f:
        fields = f.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / TICK


def start(cmd, cwd=None, env=None):
    proc = subprocess.Popen(cmd, cwd=cwd, env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    for _ in range(100):
        if subprocess.run(["xdotool", "search", "--name", "^Main$"], capture_output=True).stdout:
            break
        time.sleep(0.1)
    wid = subprocess.run(["xdotool", "search", "--name", "^Main$"], capture_output=True, text=True).stdout.split()
    if wid:
        subprocess.run(["xdotool", "windowfocus", "--sync", wid[0]], capture_output=True)
    return proc


def stop(proc):
    proc.terminate()
    try:
        proc.wait(10)
    except subprocess.TimeoutExpired:
        proc.kill()
        proc.wait()
    subprocess.run(["killall", "-q", "avworker"])
    time.sleep(0.5)


def measure(proc, action=None):
    before = cpu_seconds(proc.pid)
    if action:
        action()
    else:
        time.sleep(SECONDS)
    return 100.0 * (cpu_seconds(proc.pid) - before) / SECONDS


def hold_down():
    subprocess.run(["xdotool", "keydown", "Down"])
    time.sleep(SECONDS)
    subprocess.run(["xdotool", "keyup", "Down"])


def key(name):
    subprocess.run(["xdotool", "key", name])


def command_latency(cmd_file, presses=5):
    """Milliseconds from a Return press to the command file changing."""
    times = []
    for _ in range(presses):
        time.sleep(2)  # a pause before the press
        before = os.stat(cmd_file).st_mtime_ns if os.path.exists(cmd_file) else 0
        t0 = time.monotonic()
        key("Return")
        while time.monotonic() - t0 < 5:
            if os.path.exists(cmd_file) and os.stat(cmd_file).st_mtime_ns != before:
                break
            time.sleep(0.0005)
        times.append(1000 * (time.monotonic() - t0))
    return statistics.median(times)


def folder(name, count):
    path = os.path.join(DEVICE, name)
    shutil.rmtree(path, ignore_errors=True)
    os.makedirs(path)
    for i in range(count):
        open(os.path.join(path, f"clip {i:05d}.mp4"), "w").close()
    return path


def player(videos, decoder_dir):
    env = dict(os.environ, PATH=decoder_dir + ":" + os.environ["PATH"], KOVANI_PATH_PREFIX=DEVICE)
    os.makedirs(os.path.join(DEVICE, "tmp/kovani_player"), exist_ok=True)
    proc = start(["./kovani_player", "-d", videos], cwd=APP, env=env)
    time.sleep(3)  # the folder loads
    return proc


def peer(*args):
    proc = start([os.path.join(BENCH, "sdl_peer"), *args])
    time.sleep(1)
    return proc


def median_of(run):
    return statistics.median(run() for _ in range(RUNS))


def main():
    few = folder("few", 3)
    many = folder("many", 20000)
    playing = os.path.join(BENCH, "playing")
    cmd_file = os.path.join(DEVICE, "tmp/kovani_player/cmd")

    def idle_player():
        p = player(few, playing)
        value = measure(p)
        stop(p)
        return value

    def idle_peer():
        p = peer("idle")
        value = measure(p)
        stop(p)
        return value

    def playing_player():
        p = player(few, playing)
        key("space")  # plays the first video
        time.sleep(3)
        value = measure(p)
        stop(p)
        return value

    def held_player():
        p = player(many, playing)
        value = measure(p, hold_down)
        stop(p)
        return value

    def held_peer():
        p = peer("list")
        value = measure(p, hold_down)
        stop(p)
        return value

    def held_image_peer():
        p = peer("imagelist")
        value = measure(p, hold_down)
        stop(p)
        return value

    def latency_player():
        p = player(few, playing)
        key("space")
        time.sleep(3)
        value = command_latency(cmd_file)
        stop(p)
        return value

    def latency_peer():
        p = peer("cmd", cmd_file)
        value = command_latency(cmd_file)
        stop(p)
        return value

    rows = [
        ("CPU while the browser sits idle", idle_player, idle_peer, "%"),
        ("CPU while a video plays (stand-in decoder)", playing_player, idle_peer, "%"),
        ("CPU while Down is held in a 20000-entry list", held_player, held_peer, "%"),
        ("the same, peer over a full-screen background image", held_player, held_image_peer, "%"),
        ("first press after a pause -> command file", latency_player, latency_peer, "ms"),
    ]
    measured = {}  # the player's figure is measured once, whatever it is set beside

    def figure(run):
        if run not in measured:
            measured[run] = median_of(run)
        return measured[run]

    for name, ours, theirs, unit in rows:
        a, b = figure(ours), median_of(theirs)
        ratio = a / b if b > 0 else float("inf")
        print(f"{name}: {a:.1f} {unit}; peer {b:.1f} {unit}; ratio {ratio:.2f}", flush=True)


main()
