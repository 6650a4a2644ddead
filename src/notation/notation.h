// Notation: ordinals to the text of labels, under six toggles.
//
// Terms are stored in one form only, psi_a(b). What the user reads are the
// classical forms (numbers, omega powers, epsilon numbers, Veblen's varphi,
// Omega), each a reading of the same terms that is right on some range and
// each switched off on its own. Term by term the highest form that is on and
// applies is chosen, and the term's arguments are converted exactly into the
// arguments of that form: psi_0(Omega^2.2) is "varphi_{2}(1)".
//
// The text is plain ASCII in the source language of the text markup: Greek
// letters spelled out, "^{" and "_{" for raised and lowered text.
//
// Memory: texts are always on the heap. Temporary ordinals come from
// Ord_alloc, so under the arena they stay there until the rewind; in heap mode
// their top arrays are released before returning. They share everything below
// with the input, which is only read.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "OrdBuchholz/ord.h"

// Number of toggles in a row.
constexpr int32_t NOTATION_TOGGLES = 6;

// Indices of the toggles in a NotationRow, in caption order.
enum NotationToggle : int32_t {
    TOGGLE_N = 0,        // "n": a finite term as a number
    TOGGLE_DOT = 1,      // "alpha.n": a coefficient as ".n"; else the term is repeated
    TOGGLE_OMEGA = 2,    // "omega^alpha": the omega power form
    TOGGLE_EPSILON = 3,  // "epsilon_alpha": the epsilon form
    TOGGLE_VARPHI = 4,   // "varphi_alpha(beta)": Veblen's two-argument form
    TOGGLE_BIG_OMEGA = 5,  // "Omega_alpha": the Omega form
};

// One line of notation: six on/off words, on when not 0.
struct NotationRow {
    uint32_t toggle[NOTATION_TOGGLES];
};

// The form chosen for one term.
enum NotationForm : int32_t {
    FORM_PLACEHOLDER,  // "x": coef 0
    FORM_MARKER,       // "I": coef 0xFFFFFFFF
    FORM_NUMBER,       // "%u"
    FORM_BIG_OMEGA,    // "Omega" or "Omega_{a}"
    FORM_OMEGA,        // "omega" or "omega^{E}"
    FORM_EPSILON,      // "epsilon_{A}"
    FORM_VARPHI,       // "varphi_{A}(B)"
    FORM_PSI,          // "psi_{a}(b)"
};

// The text of x in the notation of `row`: a new heap string, never null; the
// caller frees it with free(). The length has no limit: with "alpha.n" off a
// term with coefficient c is written c times. Written with an explicit stack,
// so any depth of nesting costs heap, not stack.
char *Ord_tostring(Ord x, const NotationRow *row);
// The first `limit` bytes of that text, and no work beyond them: *cut tells
// whether the whole text is longer. For labels and read-outs, which can use
// only so much of a text that may run to millions of bytes.
char *Ord_tostring_limit(Ord x, const NotationRow *row, size_t limit, bool *cut);

// ---- the conversions, for callers that need the values behind the text ----
// Each result is a new top array from Ord_alloc (release with Ord_freearray)
// that shares everything below with t.

// Which form `row` gives the term t (its coefficient aside).
NotationForm notation_form(const OrdTerm *t, const NotationRow *row);
// For a term psi_a(b) whose argument ends in a sub at most a: the E with
// psi_a(b) = omega^E.
Ord notation_omega_exponent(const OrdTerm *t);
// For a term in the range of the epsilon form: the A with psi_a(b) = epsilon_A.
Ord notation_epsilon_index(const OrdTerm *t);
// For a term in the range of the varphi form: psi_a(b) = varphi_A(B).
void notation_varphi_indices(const OrdTerm *t, Ord *A, Ord *B);
