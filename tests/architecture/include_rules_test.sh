#!/bin/bash
# The rules hold in the source tree, and a tree that breaks any of them is found out.
#   include_rules_test.sh <src folder>
set -u
here=$(cd "$(dirname "$0")" && pwd)
src=${1:?usage: include_rules_test.sh <src folder>}
fixture=$(mktemp -d)
trap 'rm -rf "$fixture"' EXIT
failures=0

fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

plant() { # <file> <line>
    rm -rf "${fixture:?}"/*
    mkdir -p "$fixture/$(dirname "$1")"
    printf '#pragma once\n%s\n' "$2" >"$fixture/$1"
}

refused() { # <file> <line>
    plant "$1" "$2"
    local said
    said=$("$here/include_rules.sh" "$fixture") && fail "accepted in $1: $2"
    [[ $said == "$1:2: "* ]] || fail "wrong message for $1: $2: $said"
}

accepted() { # <file> <line>
    plant "$1" "$2"
    "$here/include_rules.sh" "$fixture" || fail "refused in $1: $2"
}

"$here/include_rules.sh" "$src" || fail "the source tree breaks the rules above"

# Qt and the device libraries stay out of the core and the batch program.
for file in platform/include/platform/A.h platform/A.cpp playback/A.cpp files/A.cpp dsp/A.cpp \
    interchange/A.cpp midi/A.cpp meter/LevelMeterGeometry.cpp meter/include/meter/LevelMeterGeometry.h batch/A.cpp; do
    refused "$file" '#include <QString>'
    refused "$file" '#include <cubeb/cubeb.h>'
    refused "$file" '#include "app/AppDelegate.h"'
    accepted "$file" '#include <cstdint>'
done

# However it is written, and whichever library it is.
for header in QtCore/QString Qt/qglobal.h alsa/asoundlib.h jack/jack.h pulse/simple.h; do
    refused playback/A.cpp "#include <$header>"
done
refused playback/A.cpp '  #  include <QString> // only here'
refused playback/A.cpp '#include "../files/AudioFile.h"'
refused playback/A.cpp '#include "QString"'
refused playback/A.cpp '#include "unistd.h"'
accepted playback/A.cpp '// #include <QString> would be wrong here'

# The vector library is for the kernels alone.
refused dsp/A.cpp '#include <hwy/highway.h>'
accepted dsp/kernels/A.cpp '#include <hwy/highway.h>'
refused dsp/kernels/A.cpp '#include <thread>'
refused dsp/kernels/A.cpp '#include <QString>'

# The libraries for foreign sound files are for their room alone.
for header in sndfile.h soxr.h; do
    accepted interchange/A.cpp "#include <$header>"
    for file in files/A.cpp playback/A.cpp dsp/A.cpp dsp/kernels/A.cpp batch/A.cpp app/A.cpp \
        platform/linux/A.cpp; do
        refused "$file" "#include <$header>"
    done
done
refused interchange/A.cpp '#include <unistd.h>'
refused interchange/A.cpp '#include <QString>'
refused interchange/A.cpp '#include <thread>'
refused interchange/A.cpp '#include "dsp/Filters.h"'
refused files/A.cpp '#include "interchange/Import.h"'
refused dsp/A.cpp '#include "interchange/Import.h"'
accepted interchange/A.cpp '#include "files/AtomicFile.h"'
accepted batch/A.cpp '#include "interchange/Import.h"'
accepted app/A.cpp '#include "interchange/Import.h"'

# Pictures of the sound know only its samples; their builder has a thread, and no lock.
for file in overview/A.cpp overview/WavePyramid.cpp overview/include/overview/Spectrogram.h; do
    refused "$file" '#include <QImage>'
    refused "$file" '#include <mutex>'
    refused "$file" '#include "playback/SharedState.h"'
    accepted "$file" '#include "platform/Progress.h"'
done
refused overview/Spectrogram.cpp '#include <thread>'
accepted overview/Spectrogram.cpp '#include <kiss_fftr.h>'
accepted overview/OverviewBuilder.cpp '#include <thread>'
accepted interface/A.cpp '#include "overview/WavePyramid.h"'

# The keeper of unsaved work has a thread and a lock, and neither window nor devices.
for file in rescue/A.cpp rescue/include/rescue/A.h; do
    for header in QString cubeb/cubeb.h sndfile.h fstream; do
        refused "$file" "#include <$header>"
    done
    refused "$file" '#include "app/AppDelegate.h"'
    refused "$file" '#include "dsp/Filters.h"'
    refused "$file" '#include "interchange/Import.h"'
    accepted "$file" '#include <mutex>'
    accepted "$file" '#include <unistd.h>'
    accepted "$file" '#include "files/AudioFileWriter.h"'
done
refused files/A.cpp '#include "rescue/RescueKeeper.h"'
refused batch/A.cpp '#include "rescue/RescueKeeper.h"'
accepted app/A.cpp '#include "rescue/RescueKeeper.h"'

# The operating system is behind the platform's interfaces.
for header in fcntl.h unistd.h sys/stat.h sys/mman.h stdio.h; do
    refused files/A.cpp "#include <$header>"
    refused playback/A.cpp "#include <$header>"
    accepted platform/linux/A.cpp "#include <$header>"
done
refused files/A.cpp '#include <fstream>'
refused files/A.cpp '#include <filesystem>'

# Nothing waits in playback.
for header in mutex shared_mutex condition_variable semaphore future thread iostream; do
    refused playback/include/playback/A.h "#include <$header>"
done

# Each floor sees only those below it.
refused platform/include/platform/A.h '#include "playback/SharedState.h"'
refused platform/include/platform/A.h '#include "platform_linux/LinuxServices.h"'
refused playback/A.cpp '#include "files/AudioFile.h"'
refused playback/A.cpp '#include "platform_linux/LinuxServices.h"'
refused dsp/A.cpp '#include "files/AudioFile.h"'
refused files/A.cpp '#include "dsp/Filters.h"'
refused platform/linux/A.cpp '#include "files/AudioFile.h"'
refused platform/linux/A.cpp '#include <QString>'
refused app/A.cpp '#include <cubeb/cubeb.h>'
accepted playback/A.cpp '#include "platform/Clock.h"'
accepted files/A.cpp '#include "playback/SharedState.h"'
accepted batch/A.cpp '#include "A.cpp"' # a file beside it
accepted platform/linux/A.cpp '#include <cubeb/cubeb.h>'
accepted app/A.cpp '#include <QString>'

if ((failures > 0)); then
    exit 1
fi
echo "all include rules hold"
