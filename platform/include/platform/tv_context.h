/*
 * The TV context: what the viewer is doing just now, as bits, so that services can keep quiet.
 * Each query is bracketed by tvcontext_init() and tvcontext_fini(); all three must be cheap and must
 * not block, since they run on the plug path.
 */
#ifndef PLATFORM_TV_CONTEXT_H
#define PLATFORM_TV_CONTEXT_H

#ifdef __cplusplus
extern "C" {
#endif

/** The states in which the viewer must not be distracted; other bits are of no concern here. */
enum {
    TVCONTEXT_DISTRACTION_FREE_BIT_7 = 0x80,
    TVCONTEXT_DISTRACTION_FREE_BIT_10 = 0x400,
    TVCONTEXT_DISTRACTION_FREE_BIT_11 = 0x800,
    TVCONTEXT_DISTRACTION_FREE_MASK = 0xC80 /**< any of them */
};

/** Begin a query. 0 on success; ignored by the daemon. */
int tvcontext_init(void);

/**
 * Read the state.
 * @param state  set on success, left as it was on failure (the daemon presets 0: not distraction-free)
 * @return 0 on success; ignored by the daemon
 */
int tvcontext_query_state(int* state);

/** End a query. 0 on success; ignored by the daemon. */
int tvcontext_fini(void);

#ifdef __cplusplus
}
#endif

#endif
