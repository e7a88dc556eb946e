/* What a user's C file does with the library; compiled as C99. */
#ifndef FRINGIX_TESTS_C_USER_H
#define FRINGIX_TESTS_C_USER_H

#ifdef __cplusplus
extern "C" {
#endif

/* Walks through every function with an unknown handle; the number of calls that did not behave, 0 when all did. */
int c_user_walk(void);

#ifdef __cplusplus
}
#endif

#endif
