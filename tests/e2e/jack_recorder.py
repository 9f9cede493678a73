"""Records both its ports into a file of 32-bit floats: jack_recorder.py FILE

Its ports pass for a device's, so whatever looks for one connects to them. Says "ready"; ends with
its server or with its standard output.
"""

import sys
import threading

import jack
import numpy

client = jack.Client("recorder", no_start_server=True)
ears = [client.inports.register(f"in_{i}", is_physical=True, is_terminal=True) for i in (1, 2)]
over = threading.Event()
client.set_shutdown_callback(lambda status, reason: over.set())

with open(sys.argv[1], "wb", buffering=0) as file:
    @client.set_process_callback
    def process(_frames):
        file.write(numpy.column_stack([ear.get_array() for ear in ears]).astype("<f4").tobytes())

    with client:
        print("ready", flush=True)
        over.wait()
