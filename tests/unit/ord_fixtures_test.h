// Shared fixtures of the ordinal and notation tests: memory modes, reading
// ordinals from psi text, rows from bit strings, and text that frees itself.
#pragma once

#include <gtest/gtest.h>

#include <stdlib.h>

#include <string>
#include <vector>

#include "OrdBuchholz/memstack.h"
#include "OrdBuchholz/ord.h"
#include "OrdBuchholz/ord_expand.h"
#include "OrdBuchholz/ord_parse.h"
#include "notation/notation.h"

enum class MemoryMode { Heap, Arena };

// Runs every test of a suite of InBothModes (below) on the heap and in the arena.
#define INSTANTIATE_IN_BOTH_MODES(Suite)                                                           \
    INSTANTIATE_TEST_SUITE_P(Modes, Suite, testing::Values(MemoryMode::Heap, MemoryMode::Arena), \
                             [](const auto &i) { return i.param == MemoryMode::Heap ? "Heap" : "Arena"; })

// Ordinals read for one test, released together at its end (heap mode).
struct OrdPool {
    std::vector<Ord> owned;

    Ord read(const char *text)
    {
        Ord x;
        OrdParseError error;
        EXPECT_TRUE(Ord_parse_any(text, &x, &error)) << "reading '" << text << "': " << error.message;
        return owned.emplace_back(x);
    }
    void release()
    {
        for (size_t i = owned.size(); i-- > 0;)
            Ord_free(owned[i]);
        owned.clear();
    }
};

// A row from six digits in toggle order.
inline NotationRow row_of(const char *bits)
{
    NotationRow row;
    for (int i = 0; i < NOTATION_TOGGLES; i++)
        row.toggle[i] = bits[i] == '1';
    return row;
}

// Ord_tostring as a std::string, the heap text freed.
inline std::string text_of(Ord x, const char *bits = "111111")
{
    NotationRow row = row_of(bits);
    char *s = Ord_tostring(x, &row);
    std::string r = s;
    free(s);
    return r;
}

// The raw structure, (coef, sub, arg) nested, for failure messages.
inline std::string shape_of(Ord x)
{
    std::string s = "[";
    for (uint32_t i = 0; i < x.count; i++)
        s += (i ? ", (" : "(") + std::to_string(x.terms[i].coef) + ", " + shape_of(x.terms[i].sub) +
             ", " + shape_of(x.terms[i].arg) + ")";
    return s + "]";
}

// Fixture of the tests run once in each memory mode. The one arena is kept for
// the whole process, so LeakSanitizer sees its blocks as reachable.
class InBothModes : public testing::TestWithParam<MemoryMode> {
protected:
    void SetUp() override
    {
        static MemStack arena;
        [[maybe_unused]] static bool made = (memstack_init(&arena), true);
        if (GetParam() == MemoryMode::Arena)
            ord_arena = &arena;
    }
    void TearDown() override
    {
        pool.release();
        if (ord_arena)
            memstack_rewind(ord_arena);
        ord_arena = nullptr;
    }
    OrdPool pool;
};

// Telling fundamental sequences: x in psi, its text with all toggles on, its first members.
struct SequenceRow {
    const char *x;
    const char *text;
    std::vector<std::string> members;
};

inline const std::vector<SequenceRow> &sequence_rows()
{
    static const std::vector<SequenceRow> rows = {
        {"omega", "omega", {"0", "1", "2", "3"}},
        {"psi_{0}(2)", "omega^{2}", {"0", "omega", "omega.2", "omega.3"}},
        {"psi_{0}(omega)", "omega^{omega}", {"1", "omega", "omega^{2}", "omega^{3}"}},
        {"psi_{0}(Omega)", "epsilon_{0}", {"1", "omega", "omega^{omega}", "omega^{omega^{omega}}"}},
        {"psi_{0}(Omega.2)", "epsilon_{1}",
         {"epsilon_{0}", "omega^{epsilon_{0}.2}", "omega^{omega^{epsilon_{0}.2}}"}},
        {"psi_{0}(psi_{1}(Omega))", "varphi_{2}(0)",
         {"epsilon_{0}", "epsilon_{epsilon_{0}}", "epsilon_{epsilon_{epsilon_{0}}}"}},
        {"psi_{0}(psi_{1}(psi_{1}(Omega)))", "psi_{0}(omega^{omega^{Omega.2}})",
         {"varphi_{2}(0)", "varphi_{varphi_{2}(0)}(0)", "varphi_{varphi_{varphi_{2}(0)}(0)}(0)"}},
        {"psi_{0}(Omega_{2})", "psi_{0}(Omega_{2})",
         {"1", "epsilon_{0}", "varphi_{2}(0)", "psi_{0}(omega^{omega^{Omega.2}})"}},
        {"Omega_{omega}", "Omega_{omega}", {"1", "Omega", "Omega_{2}", "Omega_{3}"}},
        {"psi_{0}(Omega_{omega})", "psi_{0}(Omega_{omega})",
         {"omega", "epsilon_{0}", "psi_{0}(Omega_{2})", "psi_{0}(Omega_{3})"}},
        {"psi_{0}(I)", "psi_{0}(I)",
         {"omega", "epsilon_{0}", "psi_{0}(Omega_{Omega})", "psi_{0}(Omega_{Omega_{Omega}})"}},
    };
    return rows;
}

// Notation: x, the row as six digits (toggle order: n, alpha.n, omega, epsilon, varphi, Omega), the
// text. The texts of the sequence rows above are checked too, so their forms are not repeated here.
struct NotationCase {
    const char *x;
    const char *bits;
    const char *text;
};

inline const std::vector<NotationCase> &notation_cases()
{
    static const std::vector<NotationCase> rows = {
        {"omega.2+3", "111111", "omega.2+3"},
        {"psi_{1}(1)", "111111", "omega^{Omega+1}"},
        {"psi_{1}(psi_{1}(Omega))", "111111", "omega^{omega^{Omega.2}}"},
        {"psi_{0}(Omega+1)", "111111", "omega^{epsilon_{0}+1}"},
        {"psi_{0}(Omega+psi_{0}(Omega))", "111111", "omega^{epsilon_{0}.2}"},
        {"psi_{0}(psi_{1}(1))", "111111", "epsilon_{omega}"},
        {"psi_{0}(psi_{1}(1)+Omega)", "111111", "epsilon_{omega+1}"},
        {"psi_{1}(Omega_{2})", "111111", "epsilon_{Omega+1}"},
        {"psi_{0}(psi_{1}(Omega).2)", "111111", "varphi_{2}(1)"},
        {"psi_{0}(psi_{1}(Omega+3))", "111111", "varphi_{2}(omega^{3})"},
        {"psi_{0}(psi_{1}(Omega.2)+psi_{1}(Omega))", "111111", "varphi_{2}(varphi_{3}(0)+1)"},
        {"psi_{0}(psi_{1}(Omega+1)+psi_{1}(Omega))", "111111", "varphi_{2}(omega+1)"},
        {"psi_{0}(psi_{1}(psi_{1}(1)))", "111111", "varphi_{omega}(0)"},
        {"psi_{0}(psi_{1}(psi_{1}(1)+Omega))", "111111", "varphi_{omega+1}(0)"},
        {"3", "000000", "psi_{0}(0)+psi_{0}(0)+psi_{0}(0)"},
        {"3", "010000", "psi_{0}(0).3"},
        {"omega", "000000", "psi_{0}(psi_{0}(0))"},
        {"omega", "100000", "psi_{0}(1)"},
        {"omega.2+3", "011111", "omega.2+psi_{0}(0).3"},
        {"Omega", "100000", "psi_{1}(0)"},
        {"psi_{0}(Omega.2)", "011111", "epsilon_{psi_{0}(0)}"},
        {"psi_{0}(psi_{1}(Omega))", "111101", "psi_{0}(omega^{Omega.2})"},
        {"psi_{0}(psi_{1}(Omega))", "011111", "varphi_{psi_{0}(0).2}(0)"},
        {"psi_{0}(psi_{1}(psi_{1}(1)))", "110111", "varphi_{psi_{0}(1)}(0)"},
        {"psi_{1}(Omega_{2})", "111110", "epsilon_{psi_{1}(0)+1}"},
    };
    return rows;
}

// The psi text of every table row, and of two values whose walks pass the templates of Omega.n and psi_1.
inline std::vector<const char *> table_ordinals()
{
    std::vector<const char *> all = {"Omega.2", "psi_{1}(Omega)"};
    for (const SequenceRow &r : sequence_rows())
        all.push_back(r.x);
    for (const NotationCase &c : notation_cases())
        all.push_back(c.x);
    return all;
}

// Expands x and every limit member, `depth` levels down, n members each, from a fresh path as the
// layout does; records every ordinal met and each expansion, kept until release() for the members.
struct ExpansionWalk {
    struct Step {
        Ord x;
        OrdExpansion e;
    };
    std::vector<Step> steps;
    std::vector<Ord> met;

    void walk(Ord x, int depth, int n)
    {
        met.push_back(x);
        if (depth == 0 || x.count == 0 || OrdTerm_isfinite(Ord_lastterm(x)))
            return;
        OrdExpansion e = Ord_expandfresh(x, n);
        steps.push_back(Step{x, e});
        for (int32_t i = 0; i < e.n; i++)
            walk(e.seq[i], depth - 1, n);
    }
    void release()
    {
        for (size_t i = steps.size(); i-- > 0;)
            Ord_freeexpansion(steps[i].e);
        steps.clear();
        met.clear();
    }
};
