// Fresnel transmission before it is rounded.
#pragma once

#include "system/system.h"

namespace wpm {

// fresnelTTE and fresnelTTM, whose arguments these take, without the trim.
cpx transmission_TE(const cpx& kz_i, const cpx& kz_t);
cpx transmission_TM(const cpx& n_i, const cpx& n_t, const cpx& kz_i, const cpx& kz_t);

}  // namespace wpm
