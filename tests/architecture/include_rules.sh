#!/bin/bash
# Reads every include line under a source tree and names each one that its room may not have.
#   include_rules.sh <src folder>       status 0: all keep the rules
set -u
src=${1:?usage: include_rules.sh <src folder>}
cd "$src" || exit 2

devices='cubeb|alsa|jack|pulse|pipewire|portaudio|RtAudio|RtMidi'
locks='mutex|shared_mutex|condition_variable|semaphore|latch|barrier|future|stop_token'
foreign='sndfile|soxr'
slow='thread|iostream|fstream|filesystem|syncstream'
found=0

# rule <room> <rooms it may include> <angle-bracket headers it may not> <files...>
# A header in angle brackets with a dot or a slash is not of the standard library; "system" among
# the allowed rooms permits it all the same, and "<name>" that one.
rule() {
    local room=$1 allowed=" $2 " forbidden=$3
    shift 3
    local path here=() files=()
    for path in "$@"; do
        [[ -e $path ]] && here+=("$path")
    done
    ((${#here[@]} == 0)) && return # a room that is not there
    mapfile -t files < <(find "${here[@]}" -name '*.cpp' -o -name '*.h' | sort)
    ((${#files[@]} == 0)) && return
    awk -v room="$room" -v allowed="$allowed" -v forbidden="^($forbidden)(/|\\.h|$)" '
        function isBeside(header,    path, line) {
            path = FILENAME
            sub(/[^\/]*$/, header, path)
            return (getline line < path) >= 0
        }
        BEGIN { osToo = index(allowed, " system ") > 0 }
        function bad(why) { printf "%s:%d: %s may not include %s: %s\n", FILENAME, FNR, room, name, why; wrong = 1 }
        /^[ \t]*#[ \t]*(include|include_next|import)[ \t]*[<"]/ {
            quoted = index($0, "\"") > 0 && (index($0, "<") == 0 || index($0, "\"") < index($0, "<"))
            name = $0
            sub(/^[^<"]*[<"]/, "", name)
            sub(/[>"].*$/, "", name)
            if (name ~ /(^|\/)\.\.(\/|$)/) { bad("a path that climbs out of its folder"); next }
            if (quoted) {
                other = name
                if (sub(/\/.*$/, "", other)) {
                    if (index(allowed, " " other " ") == 0) bad("a room above or beside it")
                } else if (!osToo && !isBeside(name)) bad("not in the same folder")
                next
            }
            if (name ~ forbidden) bad("forbidden there")
            else if (!osToo && index(allowed, " <" name "> ") == 0 && (name ~ /[.\/]/ || name ~ /^Q[A-Z]/)) bad("not of the standard library")
        }
        END { exit wrong }' "${files[@]}" || found=1
}

qt='Q[A-Z][A-Za-z0-9]*'
rule platform "platform" "$locks|thread" platform/include platform/*.cpp platform/*.h
rule playback "platform playback" "$locks|$slow" playback
rule files "platform playback files" "$locks|$slow" files
rule dsp "platform playback dsp" "$locks|$slow" dsp/*.cpp dsp/include
rule interchange "platform playback files interchange <sndfile.h> <soxr.h>" "$locks|$slow" interchange
rule "the vector kernels" "platform playback dsp system" "$locks|$slow|$devices|$foreign|$qt" dsp/kernels
rule midi "platform playback midi" "$locks|$slow" midi
rule "the meter's geometry" "meter" "$locks|$slow" \
    meter/LevelMeterGeometry.cpp meter/include/meter/LevelMeterGeometry.h \
    meter/SpokenLevel.cpp meter/include/meter/SpokenLevel.h
# Pictures are plain functions of the samples; only the builder has a thread. It waits by joining it.
rule "the overview's pictures" "platform overview system" "$locks|$slow|$devices|$qt" \
    overview/ColourMap.cpp overview/Spectrogram.cpp overview/WavePyramid.cpp \
    overview/include/overview/ColourMap.h overview/include/overview/Spectrogram.h \
    overview/include/overview/WavePyramid.h
rule "the overview" "platform overview system" \
    "$locks|iostream|fstream|filesystem|syncstream|$devices|$qt" overview
rule rescue "platform playback files rescue system" "iostream|fstream|$devices|$foreign|$qt" rescue
rule batch "platform platform_linux playback files interchange dsp midi batch" "$locks" batch
rule "the Linux platform" "platform platform_linux system" "$foreign|$qt" platform/linux
rule "the window" \
    "platform platform_linux playback files interchange dsp midi meter overview rescue interface app system" \
    "$devices|$foreign" app interface meter

exit $found
