// A register of vectorBytes bytes full of doubles, for the loops of one SIMD level. Stands inside an unnamed
// namespace (see cmake/SimdLevels.cmake), so nothing is included here.

typedef double Vector __attribute__((vector_size(vectorBytes)));

constexpr int lanes = vectorBytes / static_cast<int>(sizeof(double));

inline Vector load(const double* from) {
  Vector v;
  __builtin_memcpy(&v, from, sizeof v);
  return v;
}

inline void store(const Vector& v, double* to) {
  __builtin_memcpy(to, &v, sizeof v);
}
