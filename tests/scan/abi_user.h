#ifndef FRINGIX_SCAN_ABI_USER_H
#define FRINGIX_SCAN_ABI_USER_H

#ifdef __cplusplus
extern "C" {
#endif

int abi_user_walk(void); /* how many calls did not do what they should */

#ifdef __cplusplus
}
#endif

#endif
