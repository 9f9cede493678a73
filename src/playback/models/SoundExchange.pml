/* The exchange of the sound (SoundExchange.cpp) against the render callback's passage through it.
 * Every interleaving of the steps below; the variables are sequentially consistent, as they are in
 * the code, so that the interleavings are all that there is.
 *
 * Variants, each of which is to be found wrong:
 *   NO_COUNTING   the exchange does not wait for the calls under way
 *   LATE_COUNTING a call counts itself in only after it has read the length
 *   NOT_EMPTIED   the exchange does not publish length 0 first
 *   WEAK_LENGTH   length 0 is published with release only: it may lie in the processor's store
 *                 buffer while the counts are read
 *   TWO_CALLERS   two render calls at once, which no output makes: the counts are then too few
 */
#define EXCHANGES 4
#define CALLS 6
#define ADDRESSES 2 /* so that a new block lies where a freed one lay */

byte callsEntered, callsLeft; /* the counters of these names */
byte fBuffer, fBuffersize;    /* address 0: null. Lengths tell the sounds apart */
byte lengthAt[ADDRESSES + 1]; /* of the block at that address; 0: freed */
bool exchanged;

#ifdef WEAK_LENGTH
bool bufferedLength0; /* the store of length 0, until the processor lets the others see it */
#endif

/* RenderPassage and what FloatBufferRenderProc reads while it lives. */
proctype audio() {
    byte calls, count, samples, frame;
    do
    :: calls < CALLS ->
        calls++;
#ifdef LATE_COUNTING
        count = fBuffersize;
        callsEntered++;
#else
        callsEntered++;      /* RenderPassage(): callsEntered.fetch_add(1), */
        count = fBuffersize; /*                  fBuffersize.load() */
#endif
        samples = fBuffer;   /*                  fBuffer.load() */
        if
        :: samples == 0 -> skip /* "Can't access input buffer" */
        :: else ->
            frame = 0;
            do /* soundFrames: one sample after the other, up to the count */
            :: frame < count ->
                assert(lengthAt[samples] != 0);     /* not freed */
                assert(lengthAt[samples] == count); /* and of this length */
                frame++
            :: else -> break
            od
        fi;
        callsLeft++          /* ~RenderPassage() */
    :: else -> break
    od
}

/* The main thread: replaceBuffer, EXCHANGES times. The output does not stop calling: fallIdle is
 * left out, so that every exchange may meet a call under way. */
proctype main() {
    byte count, entered, old, block;
    do
    :: count < EXCHANGES ->
        count++;
        /* The new block is ready before anything is published: allocateSamples and the kernel. */
        if
        :: lengthAt[1] == 0 -> block = 1
        :: lengthAt[2] == 0 -> block = 2
        fi;
        lengthAt[block] = count;
        /* swapBuffer: fBuffersize.exchange(0) */
#ifndef NOT_EMPTIED
#ifdef WEAK_LENGTH
        bufferedLength0 = true;
#else
        fBuffersize = 0;
#endif
#endif
#ifndef NO_COUNTING
        entered = callsEntered;    /* awaitRenderCallsUnderWay: callsEntered.load() */
        callsLeft >= entered;      /* while (callsLeft.load() < entered) */
#endif
#ifdef WEAK_LENGTH
        !bufferedLength0;          /* stores of one thread are seen in their order */
#endif
        old = fBuffer;             /* samples.swap(ownedBlock()) */
        fBuffer = block;           /* fBuffer.store */
        fBuffersize = count;       /* fBuffersize.store */
        lengthAt[old] = 0          /* the old block is freed with `samples` */
    :: else -> break
    od;
    exchanged = true
}

#ifdef WEAK_LENGTH
/* Lets the store be seen at any later time. */
proctype storeBuffer() {
end:do
    :: atomic { bufferedLength0 -> fBuffersize = 0; bufferedLength0 = false }
    od
}
#endif

init {
    atomic {
        run main();
        run audio();
#ifdef TWO_CALLERS
        run audio();
#endif
#ifdef WEAK_LENGTH
        run storeBuffer();
#endif
    }
}

#ifndef ONLY_SAFETY
/* The main thread waits for no call for ever: each step of audio() is taken in the end. */
ltl exchangeEnds { <> exchanged }
#endif
