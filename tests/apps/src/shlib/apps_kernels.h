#pragma once
void kernels_scale_add(int* restrict out, const int* restrict x, const int* restrict y, int k, int n);
long kernels_dot(const int* x, const int* y, int n);
int kernels_count_above(const short* v, short limit, int n);
