// Named ordinals: the table of texts and names.
#include "notation/named_ordinals.h"

#include <string.h>
#include <strings.h>

const NamedOrdinal named_ordinals[NAMED_ORDINALS] = {
    {"psi_{0}(omega^{omega^{Omega.2}})", "Feferman-Schutte ordinal"},
    {"psi_{0}(omega^{omega^{Omega.3}})", "Ackermann ordinal"},
    {"psi_{0}(omega^{omega^{omega^{Omega+1}}})", "Small Veblen ordinal"},
    {"psi_{0}(omega^{omega^{omega^{Omega.2}}})", "Large Veblen ordinal"},
    {"psi_{0}(Omega_{2})", "Bachmann-Howard ordinal"},
    {"psi_{0}(Omega_{omega})", "Buchholz's ordinal"},
    {"psi_{0}(Omega_{omega+1})", "Takeuti-Feferman-Buchholz ordinal"},
    {"psi_{0}(I)", "Extended Buchholz ordinal"},
};

const char *named_ordinal_find(const char *text)
{
    for (int32_t i = NAMED_ORDINALS; i-- > 0;)
        if (strcmp(named_ordinals[i].notation, text) == 0)
            return named_ordinals[i].name;
    return nullptr;
}

const char *named_ordinal_notation(const char *text)
{
    for (const NamedOrdinal &n : named_ordinals)
        if (strcasecmp(text, n.name) == 0)
            return n.notation;
    return nullptr;
}
