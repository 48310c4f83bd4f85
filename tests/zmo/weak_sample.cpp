// An object that must not pass the check of kernel objects.
inline int sharedByMistake(int value) {
    return value + 1;
}

using Taker = int (*)(int);
extern const Taker taker;
const Taker taker = sharedByMistake;
