#!/usr/bin/env python3
"""Kills processes in the middle of their changes to one INI file, and looks for every change that was acknowledged.

    torture.py WRITER_PROGRAM SECONDS [PROCESSES]

A killed writer is started again at once. Prints the kills, the acknowledged changes and those that are lost; the exit
status is 1 if any is lost, or if the file was ever anything but whole.
"""
import os
import random
import subprocess
import sys
import tempfile
import time

PROGRAM, SECONDS = sys.argv[1], float(sys.argv[2])
PROCESSES = int(sys.argv[3]) if len(sys.argv) > 3 else 4
COMMENT = "; what somebody wrote into the file"


class Writers:
    def __init__(self, folder):
        self.ini = os.path.join(folder, "shared.ini")
        self.logs = [os.path.join(folder, f"log{i}") for i in range(PROCESSES)]
        self.rounds = [0] * PROCESSES
        self.processes = [None] * PROCESSES

    def start(self, i):
        self.rounds[i] += 1
        command = [PROGRAM, self.ini, str(i), str(self.rounds[i]), self.logs[i]]
        self.processes[i] = subprocess.Popen(command)

    def kill(self, i):
        """False when the writer had given up by itself."""
        was_running = self.processes[i].poll() is None
        self.processes[i].kill()
        self.processes[i].wait()
        return was_running


def read_values(path):
    """{(section, key): number}, and whether the file is one that a writer has finished."""
    values, section = {}, ""
    with open(path, encoding="utf-8") as file:
        text = file.read()
    for line in text.splitlines():
        if line.startswith("["):
            section = line[1:line.index("]")]
        elif "=" in line:
            key, value = line.split("=", 1)
            values[section, key] = int(value[:-1]) if value.endswith("l") else -1
    return values, text.startswith(COMMENT + "\n") and text.endswith("\n") and -1 not in values.values()


def read_log(path):
    """{(section, key): number} of the last change of each value that was acknowledged, and how many there were."""
    last, count = {}, 0
    if os.path.exists(path):
        with open(path, encoding="utf-8") as log:
            for line in log:
                section, key, number = line.split()
                last[section, key] = int(number)
                count += 1
    return last, count


def main():
    kills, broken, gave_up = 0, 0, 0
    with tempfile.TemporaryDirectory() as folder:
        writers = Writers(folder)
        with open(writers.ini, "w", encoding="utf-8") as file:
            file.write(COMMENT + "\n")
        for i in range(PROCESSES):
            writers.start(i)
        end = time.monotonic() + SECONDS
        while time.monotonic() < end:
            time.sleep(random.uniform(0.005, 0.06))
            victim = random.randrange(PROCESSES)
            gave_up += not writers.kill(victim)
            kills += 1
            broken += not read_values(writers.ini)[1]
            writers.start(victim)
        for i in range(PROCESSES):
            gave_up += not writers.kill(i)
        found, is_whole = read_values(writers.ini)
        broken += not is_whole
        acknowledged, lost = 0, 0
        for log in writers.logs:
            last, count = read_log(log)
            acknowledged += count
            lost += sum(found.get(name, -1) < number for name, number in last.items())
    print(f"{PROCESSES} writers, {kills} kills, {acknowledged} acknowledged changes, {lost} lost")
    if broken or gave_up:
        print(f"{broken} times the file was not whole, {gave_up} writers gave up")
    return 0 if acknowledged > 0 and not (lost or broken or gave_up) else 1


if __name__ == "__main__":
    sys.exit(main())
