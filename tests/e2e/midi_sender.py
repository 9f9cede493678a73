"""A MIDI source on a JACK server that also listens: midi_sender.py CLIENT_NAME [FILE]

Reads commands from standard input, a line each, and answers each with a line:
  send HEX...     sends messages, in hexadecimal, as fast as the bus takes them; answers "sent"
  time HEX...     the same, but answers with the monotonic time of the last one in nanoseconds
  connected       answers "yes" when somebody listens to it, else "no"
  ports           answers with the names of the ports on the server that take MIDI

Into FILE, which may be a pipe, it writes what it hears and when: of each period the monotonic time
in nanoseconds and the number of frames, 64 bits each, then the frames as 32-bit floats.
"""

import collections
import struct
import sys
import threading
import time

import jack

client = jack.Client(sys.argv[1], no_start_server=True)
source = client.midi_outports.register("out")
ear = client.inports.register("ear", is_physical=True, is_terminal=True)

waiting = collections.deque()
all_sent = threading.Event()
state = {"sent_at": None}
heard = open(sys.argv[2], "wb", buffering=0) if len(sys.argv) > 2 else None

MOST_PER_PERIOD = 200


@client.set_process_callback
def process(frames):
    now = time.monotonic_ns()
    source.clear_buffer()
    for _ in range(min(len(waiting), MOST_PER_PERIOD)):
        source.write_midi_event(0, waiting.popleft())
        state["sent_at"] = now
    if not waiting:
        all_sent.set()
    if heard is not None:
        heard.write(struct.pack("=qq", now, frames) + bytes(ear.get_buffer()))


def send(messages):
    waiting.extend(messages)
    all_sent.clear()  # not before: then a period with nothing to send would have said so
    all_sent.wait()


def answer(text):
    print(text, flush=True)


def main():
    with client:
        answer("ready")
        for line in sys.stdin:
            command, *words = line.split()
            messages = [bytes.fromhex(word) for word in words]
            if command == "send":
                send(messages)
                answer("sent")
            elif command == "connected":
                answer("yes" if client.get_all_connections(source) else "no")
            elif command == "ports":
                answer(" ".join(port.name for port in client.get_ports(is_midi=True, is_input=True)))
            else:
                send(messages)
                answer(state["sent_at"])


main()
