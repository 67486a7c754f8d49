#pragma once

#include <cstdint>

#include "quorvance/vocabulary.h"

#pragma GCC visibility push(default)

// clang-format off
// The alphabetic codes of ISO 4217, in the order of its list by country or entity (each code where
// it occurs first), then fund and special codes. The raw value is the place in this list. Listed
// once, for the enumerators and for their words.
#define QUORVANCE_CURRENCY_CODES(QV) \
  QV(AFN) QV(EUR) QV(ALL) QV(DZD) QV(USD) QV(AOA) QV(XCD) QV(ARS) QV(AMD) QV(AWG) QV(AUD) \
  QV(AZN) QV(BSD) QV(BHD) QV(BDT) QV(BBD) QV(BYN) QV(BZD) QV(XOF) QV(BMD) QV(INR) QV(BTN) \
  QV(BOB) QV(BOV) QV(BAM) QV(BWP) QV(NOK) QV(BRL) QV(BND) QV(BGN) QV(BIF) QV(CVE) QV(KHR) \
  QV(XAF) QV(CAD) QV(KYD) QV(CLP) QV(CLF) QV(CNY) QV(COP) QV(COU) QV(KMF) QV(CDF) QV(NZD) \
  QV(CRC) QV(HRK) QV(CUP) QV(CUC) QV(ANG) QV(CZK) QV(DKK) QV(DJF) QV(DOP) QV(EGP) QV(SVC) \
  QV(ERN) QV(ETB) QV(FKP) QV(FJD) QV(XPF) QV(GMD) QV(GEL) QV(GHS) QV(GIP) QV(GTQ) QV(GBP) \
  QV(GNF) QV(GYD) QV(HTG) QV(HNL) QV(HKD) QV(HUF) QV(ISK) QV(IDR) QV(XDR) QV(IRR) QV(IQD) \
  QV(ILS) QV(JMD) QV(JPY) QV(JOD) QV(KZT) QV(KES) QV(KPW) QV(KRW) QV(KWD) QV(KGS) QV(LAK) \
  QV(LBP) QV(LSL) QV(ZAR) QV(LRD) QV(LYD) QV(CHF) QV(MOP) QV(MKD) QV(MGA) QV(MWK) QV(MYR) \
  QV(MVR) QV(MRU) QV(MUR) QV(XUA) QV(MXN) QV(MXV) QV(MDL) QV(MNT) QV(MAD) QV(MZN) QV(MMK) \
  QV(NAD) QV(NPR) QV(NIO) QV(NGN) QV(OMR) QV(PKR) QV(PAB) QV(PGK) QV(PYG) QV(PEN) QV(PHP) \
  QV(PLN) QV(QAR) QV(RON) QV(RUB) QV(RWF) QV(SHP) QV(WST) QV(STN) QV(SAR) QV(RSD) QV(SCR) \
  QV(SLL) QV(SGD) QV(XSU) QV(SBD) QV(SOS) QV(SSP) QV(LKR) QV(SDG) QV(SRD) QV(SZL) QV(SEK) \
  QV(CHE) QV(CHW) QV(SYP) QV(TWD) QV(TJS) QV(TZS) QV(THB) QV(TOP) QV(TTD) QV(TND) QV(TRY) \
  QV(TMT) QV(UGX) QV(UAH) QV(AED) QV(USN) QV(UYU) QV(UYI) QV(UYW) QV(UZS) QV(VUV) QV(VES) \
  QV(VND) QV(YER) QV(ZMW) QV(ZWL) QV(XBA) QV(XBB) QV(XBC) QV(XBD) QV(XTS) QV(XXX) QV(XAU) \
  QV(XPD) QV(XPT) QV(XAG)
// clang-format on

namespace quorvance {

/// A currency.
enum class CurrencyCode : std::int64_t {
#define QUORVANCE_ENUMERATOR(code) code,
  QUORVANCE_CURRENCY_CODES(QUORVANCE_ENUMERATOR)
#undef QUORVANCE_ENUMERATOR
};

/// Upper case only; an unknown word reads as USD.
using CurrencyCodeToString = VocabularyToString<CurrencyCode>;
using CurrencyCodeEnumerator = VocabularyEnumerator<CurrencyCode>;

extern template class VocabularyToString<CurrencyCode>;
extern template class VocabularyEnumerator<CurrencyCode>;

}  // namespace quorvance

#pragma GCC visibility pop
