"""Kills each kind of sound server so often in mid-play, and nothing else."""

from servers import Desktop
from soak_servers import KINDS, soak_kind

COUNT = 200  # of each kind


def run(count, table):
    desktop = Desktop()
    try:
        for kind in KINDS:
            soak_kind(desktop, kind, count, table, names=["killed"], seconds=1)
    finally:
        desktop.close()
