"""A MIDI source on a JACK server that also listens: midi_sender.py CLIENT_NAME

Reads commands from standard input, a line each, and answers each with a line:
  send HEX...     sends messages, in hexadecimal, as fast as the bus takes them; answers "sent"
  latency HEX     sends one message and answers with the frames from it to the first sound
  ports           answers with the names of the ports on the server that take MIDI
"""

import collections
import sys
import threading

import jack

client = jack.Client(sys.argv[1], no_start_server=True)
source = client.midi_outports.register("out")
ear = client.inports.register("ear", is_physical=True, is_terminal=True)

waiting = collections.deque()
all_sent = threading.Event()
heard = threading.Event()
state = {"sent_at": None, "frames": None, "listening": False}

MOST_PER_PERIOD = 200


@client.set_process_callback
def process(frames):
    source.clear_buffer()
    now = client.last_frame_time
    for _ in range(min(len(waiting), MOST_PER_PERIOD)):
        source.write_midi_event(0, waiting.popleft())
        state["sent_at"] = now
    if not waiting:
        all_sent.set()
    if state["listening"] and state["sent_at"] is not None:
        loud = ear.get_array().nonzero()[0]
        if len(loud) > 0:
            state["frames"] = now + int(loud[0]) - state["sent_at"]
            state["listening"] = False
            heard.set()


def send(messages):
    all_sent.clear()
    waiting.extend(messages)
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
            elif command == "ports":
                answer(" ".join(port.name for port in client.get_ports(is_midi=True, is_input=True)))
            else:
                state["sent_at"] = None
                heard.clear()
                state["listening"] = True
                send(messages)
                answer(state["frames"] if heard.wait(10) else "silence")


main()
