// Buchholz operations: collapse, templates, substitution and the normal test.
#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"
#include "ord_fixtures_test.h"

namespace {

class Buchholz : public InBothModes {
protected:
    // Arrays made by hand, bypassing the reader's own collapse.
    Ord keep(Ord x) { return made.emplace_back(x); }
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
    const OrdTerm kept[] = {{1, Ord_zero(), pool.read("omega")},
                            {1, Ord_zero(), keep(Ord_term(2, Ord_zero(), pool.read("Omega")))},
                            {1, pool.read("1"), eps0}};
    for (const OrdTerm &k : kept)
        EXPECT_EQ(Ord_collapse(k).arg.terms, k.arg.terms) << text_of(k.arg);
}

TEST_P(Buchholz, TemplatesPutThePlaceholderAtTheEndingOmega)
{
    // x, its template (in psi: classical forms take x for an ordinal), and it filled with 1 and with 0
    const char *cases[][4] = {
        {"Omega", "x", "1", "0"},
        {"Omega.3", "Omega.2+x", "Omega.2+1", "Omega.2"},
        {"Omega_{2}+Omega", "Omega_{2}+x", "Omega_{2}+1", "Omega_{2}"},
        {"psi_{0}(Omega)", "psi_{0}(x)", "omega", "1"},
        {"psi_{1}(Omega)", "psi_{1}(x)", "omega^{Omega+1}", "Omega"},
        {"Omega_{Omega}", "Omega_{x}", "Omega", "1"},
        {"psi_{0}(psi_{1}(psi_{1}(Omega)))", "psi_{0}(psi_{1}(psi_{1}(x)))", "varphi_{omega}(0)",
         "varphi_{2}(0)"},
    };
    for (const auto &[x, tmpl, with_1, with_0] : cases) {
        Ord t = Ord_makeimpredfn(pool.read(x));
        EXPECT_EQ(text_of(t, "110001"), tmpl) << x;
        DynArray lower;
        DynArray_init(&lower, sizeof(Ord), dyn_default_capacity);
        Ord r1 = keep(Ord_substitute(t, pool.read("1"), &lower));
        Ord r0 = keep(Ord_substitute(t, Ord_zero(), &lower));
        // the results hold nothing of the template's own arrays
        Ord_freetemplate(t);
        EXPECT_EQ(text_of(r1), with_1) << x;
        EXPECT_EQ(text_of(r0), with_0) << x;
        for (uint32_t i = 0; i < lower.count; i++)
            keep(*DynArray_at<Ord>(&lower, i));
        DynArray_free(&lower);
    }
}

TEST_P(Buchholz, NormalFormTest)
{
    for (const char *t : {"0", "5", "omega.2+3", "psi_{0}(Omega+psi_{0}(Omega))", "psi_{0}(I)",
                          "psi_{0}(psi_{1}(Omega.2)+psi_{1}(Omega))", "psi_{1}(Omega_{Omega_{2}})",
                          "psi_{0}(Omega_{psi_{0}(Omega_{omega})})"})
        EXPECT_TRUE(Ord_isnormal(pool.read(t))) << t;

    Ord eps0 = pool.read("psi_{0}(Omega)");
    Ord one = pool.read("1");
    Ord one_omega = keep(Ord_alloc(2));  // sums out of order
    one_omega.terms[0] = one.terms[0];
    one_omega.terms[1] = pool.read("Omega").terms[0];
    Ord one_one = keep(Ord_alloc(2));  // and with a repeated pair
    one_one.terms[0] = one_one.terms[1] = one.terms[0];
    const Ord not_normal[] = {
        one_omega, one_one,
        keep(Ord_term(1, Ord_zero(), eps0)),  // psi_0(epsilon_0), the collapsible shape
        // psi_0(epsilon_0 + 1): Omega inside is not below the argument
        keep(Ord_term(1, Ord_zero(), keep(Ord_add(eps0, one)))),
        keep(Ord_term(0, Ord_zero(), Ord_zero())),                // a placeholder
        keep(Ord_term(1, pool.read("psi_{0}(I)"), Ord_zero())),  // I nested below the top
    };
    for (Ord x : not_normal)
        EXPECT_FALSE(Ord_isnormal(x)) << shape_of(x);
}

INSTANTIATE_IN_BOTH_MODES(Buchholz);

}  // namespace
