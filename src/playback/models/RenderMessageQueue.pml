/* RenderMessageQueue: one producer, one consumer, a ring of RING places of which RESERVED are kept
 * for messages that matter.
 *
 * Not only every interleaving but every value that C++ lets a load see: a load that is not of the
 * thread's own variable may give any value from the one that the thread has seen last up to the
 * newest. What a thread knows the other to have done before comes from an acquire of a release
 * alone; a place that one side reads or writes without knowing that the other has done with it is a
 * data race. Values of the two indices only grow and each has one writer, so the value says all.
 *
 * Variants, each of which is to be found wrong:
 *   RELAXED_WRITTEN  the producer publishes without release
 *   RELAXED_READ     the consumer gives a place back without release
 *   EARLY_READ       the consumer gives a place back before it has copied the message
 *   EARLY_WRITTEN    the producer publishes a message before it is written
 *   NO_ROOM_CHECK    the producer does not look whether there is room
 *   NO_RESERVE       a redraw may take the last places
 */
#define RING 3
#define RESERVED 1
#define MESSAGES 7

byte ring[RING];        /* ring_: 0 nothing yet, else the number of the message, from 1 on */
byte written, read;     /* written_ and read_, their newest values */
byte writtenInto;       /* messages whose writing into their place has ended */
byte copiedFrom;        /* messages whose copying out of their place has ended */
bool isImportant[MESSAGES + 1];
bool isDropped[MESSAGES + 1];
byte delivered;         /* the number of the last message that was delivered */
byte dropped;           /* dropped_ */

/* push(message, room), called by updateValue (room RING - RESERVED) and pushImportant (RING) */
proctype producer() {
    byte n, room, seenRead, knownRead, place;
    for (n : 1 .. MESSAGES) {
        if
        :: isImportant[n] = false; room = RING - RESERVED
        :: isImportant[n] = true;  room = RING
        fi;
#ifdef NO_RESERVE
        room = RING;
#endif
        /* read_.load(acquire): any value between what was seen and what is */
        do
        :: seenRead < read -> seenRead++
        :: break
        od;
#ifndef RELAXED_READ
        knownRead = seenRead; /* all that the consumer did before it stored this value */
#endif
        if
#ifndef NO_ROOM_CHECK
        :: written - seenRead >= room ->
            isDropped[n] = true;
            if
            :: isImportant[n] -> dropped++; assert(written - seenRead == RING)
            :: else
            fi
#endif
        :: else ->
            /* a redraw leaves the last places to the others */
            assert(isImportant[n] || written - seenRead < RING - RESERVED);
#ifdef EARLY_WRITTEN
            written++;
            place = (written - 1) % RING;
#else
            place = written % RING;
#endif
            /* ring_[written % kCapacity] = message: what lay there was copied out, and known to be */
            if
#ifdef EARLY_WRITTEN
            :: written > RING -> assert(knownRead >= written - RING)
#else
            :: written >= RING -> assert(knownRead >= written + 1 - RING)
#endif
            :: else
            fi;
            assert(copiedFrom + RING > writtenInto);
            ring[place] = n;
            writtenInto++;
#ifndef EARLY_WRITTEN
            written++         /* written_.store(written + 1, release) */
#endif
        fi
    }
}

/* drain, again and again */
proctype consumer() {
    byte seenWritten, knownWritten, next, message, m;
end:do
    ::  /* written_.load(acquire) */
        do
        :: seenWritten < written -> seenWritten++
        :: break
        od;
#ifndef RELAXED_WRITTEN
        knownWritten = seenWritten;
#endif
        do
        :: next < seenWritten ->
            assert(knownWritten > next);  /* the writing is known to have ended, */
            assert(writtenInto > next);   /* and has */
#ifdef EARLY_READ
            read = next + 1;
#endif
            message = ring[next % RING];  /* const Message message = ring_[next % kCapacity] */
            copiedFrom++;
#ifndef EARLY_READ
            read = next + 1;              /* read_.store(next + 1, release) */
#endif
            assert(copiedFrom >= read);
            next++;
            /* deliver: in order, each once, and none is missing but those that found no room */
            assert(message > delivered);
            for (m : delivered + 1 .. message - 1) {
                assert(isDropped[m])
            }
            delivered = message
        :: else -> break
        od
    od
}

init {
    atomic {
        run producer();
        run consumer();
    }
}
