/* SPDX-License-Identifier: Apache-2.0 */
/* All public headers of the library, except <qvs/keys.h>, which few programs need, and <qvs/reporting.h>,
 * whose names are likely to collide with names of a program. */
#ifndef QVS_QVS_H
#define QVS_QVS_H

#include <qvs/bfd.h>
#include <qvs/discovery.h>
#include <qvs/dvs.h>
#include <qvs/healthcheck.h>
#include <qvs/hyp.h>
#include <qvs/ipfixdvs.h>
#include <qvs/ipfixhyp.h>
#include <qvs/kcp.h>
#include <qvs/livetracehyp.h>
#include <qvs/mesh_public.h>
#include <qvs/netdvs.h>
#include <qvs/records.h>
#include <qvs/spfhyp.h>
#include <qvs/tfhyp.h>
#include <qvs/vsdvs.h>
#include <qvs/vshyp.h>

#endif
