// The fills of test data as plain loops of their definition, which the real ones
// are measured against.
#pragma once

template <class T>
void plainRandom(T* p, int n, double lo, double hi, unsigned& seed);
template <class T>
void plainSequence(T* p, int n, double start, double hi, double step);
template <class T>
void plainJaehne(T* p, int n, double magnitude, double offset);
template <class T>
void plainPlaneJaehne(T* p, int width, int height, double magnitude, double offset);
