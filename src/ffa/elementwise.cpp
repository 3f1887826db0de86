#include "ffa/elementwise.h"

#include <algorithm>

namespace Ffa {

void addArrays(const float *x, const float *y, quint64 n, float *out)
{
    for (quint64 i = 0; i < n; ++i)
        out[i] = x[i] + y[i];
}

void addConstant(const float *x, float c, quint64 n, float *out)
{
    for (quint64 i = 0; i < n; ++i)
        out[i] = x[i] + c;
}

float largestDifference(const float *x, const float *y, quint64 n)
{
    float largest = x[0] - y[0];
    for (quint64 i = 1; i < n; ++i)
        largest = std::max(largest, x[i] - y[i]);
    return largest;
}

void rotateArray(const float *x, quint64 n, quint64 k, float *out)
{
    std::rotate_copy(x, x + k % n, x + n, out);
}

void rollAdd(const float *x, const float *y, quint64 n, quint64 shift, float *out)
{
    const quint64 start = shift % n;
    const quint64 untilWrap = n - start;
    addArrays(x, y + start, untilWrap, out);
    addArrays(x + untilWrap, y, start, out + untilWrap);
}

} // namespace Ffa
