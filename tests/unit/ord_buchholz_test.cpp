// Buchholz operations: collapse, templates, substitution and the normal test.
#include <gtest/gtest.h>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"
#include "support/report/report.h"
#include "ord_fixtures_test.h"

namespace {

class Buchholz : public InBothModes {
protected:
    // A term built by hand, bypassing the reader's own collapse.
    Ord term(uint32_t coef, Ord sub, Ord arg)
    {
        made.push_back(Ord_term(coef, sub, arg));
        return made.back();
    }
    void TearDown() override
    {
        for (Ord x : made)
            Ord_freearray(x);
        InBothModes::TearDown();
    }
    std::vector<Ord> made;
};

TEST_P(Buchholz, CollapseRemovesOnlyTheFixedPointShape)
{
    Ord eps0 = pool.read("psi_{0}(Omega)");
    // psi_0(epsilon_0) is epsilon_0, and the coefficient of the outer term stays
    OrdTerm t = Ord_collapse(OrdTerm{3, Ord_zero(), eps0});
    EXPECT_EQ(t.arg.terms, eps0.terms[0].arg.terms);
    EXPECT_EQ(t.coef, 3u);

    // left alone: psi_0(omega), as omega's argument ends at subscript 0; an
    // inner coefficient 2; and different subscripts, psi_1(psi_0(Omega))
    Ord eps0_twice = term(2, Ord_zero(), pool.read("Omega"));
    const OrdTerm kept[] = {{1, Ord_zero(), pool.read("omega")}, {1, Ord_zero(), eps0_twice},
                            {1, pool.read("1"), eps0}};
    for (const OrdTerm &k : kept)
        EXPECT_EQ(Ord_collapse(k).arg.terms, k.arg.terms) << text_of(k.arg);
}

TEST_P(Buchholz, TemplatesPutThePlaceholderAtTheEndingOmega)
{
    struct Case {
        const char *x, *tmpl, *filled_with_1;
    };
    const Case cases[] = {
        {"Omega", "x", "1"},
        {"Omega.3", "Omega.2+x", "Omega.2+1"},
        {"Omega_{2}+Omega", "Omega_{2}+x", "Omega_{2}+1"},
        {"psi_{0}(Omega)", "psi_{0}(x)", "omega"},
        {"psi_{1}(Omega)", "psi_{1}(x)", "omega^{Omega+1}"},
        {"Omega_{Omega}", "Omega_{x}", "Omega"},
        {"psi_{0}(psi_{1}(psi_{1}(Omega)))", "psi_{0}(psi_{1}(psi_{1}(x)))",
         "varphi_{omega}(0)"},
    };
    for (const Case &c : cases) {
        Ord x = pool.read(c.x);
        Ord t = Ord_makeimpredfn(x);
        // templates read best in psi: the classical forms take the
        // placeholder for an ordinal
        EXPECT_EQ(text_of(t, "110001"), c.tmpl) << c.x;

        DynArray list;
        DynArray_init(&list, sizeof(Ord), dyn_default_capacity);
        Ord filled = Ord_substitute(t, pool.read("1"), &list);
        EXPECT_EQ(text_of(filled), c.filled_with_1) << c.x;
        // the result holds nothing of the template's own arrays: free it first
        Ord_freetemplate(t);
        EXPECT_EQ(text_of(filled), c.filled_with_1) << c.x;
        Ord_freearray(filled);
        for (uint32_t i = 0; i < list.count; i++)
            Ord_freearray(*DynArray_at<Ord>(&list, i));
        DynArray_free(&list);
    }
}

TEST_P(Buchholz, SubstitutionConcatenatesAndRecordsLowerArrays)
{
    Ord t = Ord_makeimpredfn(pool.read("Omega.3"));
    DynArray list;
    DynArray_init(&list, sizeof(Ord), dyn_default_capacity);

    // 0 makes the placeholder vanish: Omega.2
    Ord r0 = Ord_substitute(t, Ord_zero(), &list);
    EXPECT_EQ(text_of(r0), "Omega.2");
    // no absorption: the terms of p follow as they are
    Ord p = pool.read("omega.2+1");
    Ord r1 = Ord_substitute(t, p, &list);
    EXPECT_EQ(shape_of(Ord_slice(r1, 1, 2)), shape_of(p));
    EXPECT_EQ(r1.terms[1].arg.terms, p.terms[0].arg.terms);
    // only the chain down to the placeholder is new, and here it is the top
    // array alone: nothing goes to the list
    EXPECT_EQ(list.count, 0u);
    // one array a level below the top, and the rest shared with the source
    Ord deep = pool.read("psi_{0}(psi_{1}(Omega.2)+psi_{1}(Omega))");
    Ord t2 = Ord_makeimpredfn(deep);
    Ord r2 = Ord_substitute(t2, p, &list);
    EXPECT_EQ(list.count, 2u);
    EXPECT_EQ(r2.terms[0].arg.terms[0].arg.terms, deep.terms[0].arg.terms[0].arg.terms);
    Ord_freetemplate(t2);
    Ord_freearray(r2);

    Ord_freearray(r0);
    Ord_freearray(r1);
    for (uint32_t i = 0; i < list.count; i++)
        Ord_freearray(*DynArray_at<Ord>(&list, i));
    DynArray_free(&list);
    Ord_freetemplate(t);
}

TEST_P(Buchholz, NormalFormTest)
{
    const char *normal[] = {
        "0", "5", "omega.2+3", "psi_{0}(Omega+psi_{0}(Omega))", "psi_{0}(psi_{1}(Omega.2)+psi_{1}(Omega))",
        "psi_{0}(Omega_{psi_{0}(Omega_{omega})})", "psi_{1}(Omega_{Omega_{2}})", "psi_{0}(I)",
    };
    for (const char *t : normal)
        EXPECT_TRUE(Ord_isnormal(pool.read(t))) << t;

    Ord omega_cap = pool.read("Omega");
    Ord eps0 = pool.read("psi_{0}(Omega)");
    Ord one = pool.read("1");
    // psi_0(epsilon_0) is the collapsible shape
    EXPECT_FALSE(Ord_isnormal(term(1, Ord_zero(), eps0)));
    // psi_0(epsilon_0 + 1): Omega inside is not below the argument
    Ord eps0_plus1 = Ord_add(eps0, one);
    EXPECT_FALSE(Ord_isnormal(term(1, Ord_zero(), eps0_plus1)));
    Ord_freearray(eps0_plus1);
    // a sum out of order, a repeated pair, a placeholder
    Ord bad = Ord_alloc(2);
    bad.terms[0] = one.terms[0];
    bad.terms[1] = omega_cap.terms[0];
    EXPECT_FALSE(Ord_isnormal(bad));
    bad.terms[1] = one.terms[0];
    EXPECT_FALSE(Ord_isnormal(bad));
    Ord_freearray(bad);
    EXPECT_FALSE(Ord_isnormal(term(0, Ord_zero(), Ord_zero())));
    // I nested below the top
    Ord top = pool.read("psi_{0}(I)");
    EXPECT_FALSE(Ord_isnormal(term(1, top, Ord_zero())));
}

// Shows fatal texts on standard error, where the death test looks, and
// writes no log file.
void fatal_to_stderr(ReportRecord *record)
{
    fprintf(stderr, "%s\n", record->text);
}

TEST(BuchholzDeath, SuccessorArgumentInTemplateIsFatal)
{
    OrdPool pool;
    Ord x = pool.read("psi_{0}(2)");
    EXPECT_EXIT(
        {
            report_handler = fatal_to_stderr;
            Ord_makeimpredfn(x);
        },
        testing::ExitedWithCode(1), "Successor ordinal argument given to Ord_makeimpredfn");
    pool.release();
}

INSTANTIATE_IN_BOTH_MODES(Buchholz);

}  // namespace
