/* The player's state machine: the render callback (RenderCallback.cpp) against plays and stops that
 * are asked for at any moment (OutputUnit.cpp), and against a sound that goes and comes
 * (SoundExchange.cpp). A call is one step of the sound; every read and every write of a shared
 * variable is a step of its own, in the code's order.
 *
 * The states are exchanged with relaxed operations. Each is one variable with one order that all
 * threads agree on, and what a play writes before its FadeIn (release) is there for the call that
 * reads that (acquire); the outcomes below do not depend on more.
 *
 * Variants, each of which is to be found wrong:
 *   PLAIN_MOVE    a call moves to the next state without looking whether it is still what it read
 *   PLAIN_END     a call that ends the play stores Silent without looking
 *   NO_SETTLING   the supervision does not look whether a play was begun as the unit stopped
 *   NO_SOUND_CHECK  the supervision starts the unit for such a play though there is no sound any more
 *   EVERY_STOP    a demand that is not met: where the unit's start takes three calls and more, a stop
 *                 that comes before the supervision has looked is ignored, as if nothing played yet
 */
#define LENGTH 3 /* of the sound, in calls */
#define PRESSES 3
#define LOSSES 1 /* of the sound */
#define IDLE_CALLS 2

#define Silent 0
#define FadeIn 1
#define Steady 2
#define FadeOut 3

byte rampState, isPlaying, readPosition, idleCycles; /* of bufferPlayer */
bool sound = true; /* fBuffer is not null */
bool running;   /* the unit makes render calls */
bool inCall;    /* one is under way, perhaps after it has stopped the unit */
bool pressing = true;
bool atRest;
bool stopAsked; /* since then no play was begun */
bool playAsked; /* and no call has seen it, and no stop was asked for */

#define compareAndExchange(variable, expected, wanted) \
    atomic { if :: variable == expected -> variable = wanted :: else fi }

inline fallSilent() {
#ifdef PLAIN_END
    rampState = Silent;
#else
    atomic {
        found = rampState;
        if :: found == state -> rampState = Silent :: else fi
    };
    if
    :: found != state && found == FadeOut -> compareAndExchange(rampState, FadeOut, Silent)
    :: else
    fi;
#endif
    state = Silent
}

proctype audio() {
    byte state, wasPlaying, position, left, found;
    bool ended;
end:do
    :: atomic { running -> inCall = true };
        if /* RenderPassage */
        :: !sound -> inCall = false; goto end
        :: else
        fi;
        /* RenderCall(): what may change meanwhile is read once */
        d_step {
            state = rampState;
            playAsked = playAsked && state != FadeIn;
            assert(!stopAsked || state == Silent || state == FadeOut) /* a stop is not lost */
        }
        wasPlaying = isPlaying;
        position = readPosition;
        /* renderFrames */
        ended = position >= LENGTH;
        compareAndExchange(readPosition, position, position + 1); /* advance */
        if
        :: ended -> /* endPlay */
            if
            :: state != Silent -> fallSilent()
            :: else
            fi;
            if /* clearPlaying */
            :: wasPlaying -> isPlaying = 0
            :: else
            fi;
            running = false                                       /* stopUnit */
        :: else
        fi;
        /* endCall */
        if
        :: state == Silent ->                                     /* endSilentCall */
            left = idleCycles;
            if
            :: left > 0 -> compareAndExchange(idleCycles, left, left - 1)
            :: left == 0 && !ended ->
                if
                :: wasPlaying -> isPlaying = 0
                :: else
                fi;
                running = false
            :: else
            fi
#ifdef PLAIN_MOVE
        :: state == FadeIn -> rampState = Steady
#else
        :: state == FadeIn -> compareAndExchange(rampState, FadeIn, Steady) /* moveTo */
#endif
        :: state == Steady ->                                     /* endSteadyCall */
            if
            :: LENGTH - (position + 1) < 2 -> compareAndExchange(rampState, Steady, FadeOut)
            :: else
            fi
        :: state == FadeOut ->                                    /* endFadeOut */
            fallSilent();
            if /* clearPlaying */
            :: wasPlaying -> isPlaying = 0
            :: else
            fi
        fi;
        inCall = false
    od
}

inline bufferPlay0() {
    if
    :: isPlaying == 0 && sound ->
        readPosition = 0;
        idleCycles = IDLE_CALLS;
        running = true; /* start() */
        isPlaying = 1;
        atomic { /* over a FadeIn that a call has just read it is one play with that */
            playAsked = playAsked || rampState != FadeIn;
            rampState = FadeIn;
            stopAsked = false
        }
    :: else
    fi
}

inline bufferStop0() {
    if
    :: isPlaying != 0 -> atomic { rampState = FadeOut; playAsked = false; stopAsked = true }
    :: else
#ifdef EVERY_STOP
        -> assert(!playAsked)
#endif
    fi
}

/* No call is under way, and none begins. */
inline restPlayer() {
    assert(!running && !inCall);
    d_step { rampState = Silent; isPlaying = 0; idleCycles = 0; playAsked = false }
}

inline superviseOutputUnit() {
    more = running || inCall; /* attend() */
    if
#ifndef NO_SETTLING
    :: !running -> /* settlePlayer */
        state = rampState;
        if
#ifndef NO_SOUND_CHECK
        :: (isPlaying != 0 || state == FadeIn) && !sound ->
            if
            :: !more -> restPlayer()
            :: else
            fi
        :: (isPlaying != 0 || state == FadeIn) && sound -> isPlaying = 1; running = true
#else
        :: isPlaying != 0 || state == FadeIn -> isPlaying = 1; running = true
#endif
        :: else ->
            if
            :: state != Silent -> rampState = Silent
            :: else
            fi
        fi
#endif
    :: else
    fi
}

/* emptyBuffer(): fallIdle(), whose wait lets the timer go on, and then no sound */
inline loseSound() {
    if
    :: running ->
        bufferStop0();
        do
        :: !running -> break
        :: running -> superviseOutputUnit()
        :: running -> running = false; !inCall; restPlayer(); break /* too long: haltOutputUnit() */
        od
    :: else
    fi;
    !inCall; /* awaitRenderCallsUnderWay() */
    atomic { sound = false; playAsked = false }
}

proctype main() {
    byte presses, losses, state;
    bool more;
    do /* a person, and the timer in between */
    :: losses < LOSSES -> losses++; loseSound()
    :: !sound -> sound = true
    :: presses < PRESSES ->
        presses++;
        if
        :: true -> bufferPlay0()
        :: true -> bufferStop0()
        fi
    :: true -> superviseOutputUnit()
    :: break
    od;
    pressing = false;
    do /* then the timer alone, while superviseOutputUnit() says that there is more */
    :: true ->
        superviseOutputUnit();
        if
        :: !more && !running -> break
        :: else
        fi
    od;
    assert(rampState == Silent);
    assert(isPlaying == 0);
    assert(!playAsked); /* no play is lost */
    atRest = true
}

init {
    atomic {
        run main();
        run audio();
    }
}

#ifndef ONLY_SAFETY
/* Whoever leaves the button alone sees the player at rest. */
ltl comesToRest { [] (!pressing -> <> atRest) }
#endif
