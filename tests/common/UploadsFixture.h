#pragma once

class TestSite;

// A small portfolio for the transfer file and enrolment tests: owners,
// properties, tenants, units and vendors chosen to meet every field and
// action rule (blank and Null names, VACANT placeholders, flags with blanks
// and in lower case, second-owner shares, a "|" and a comma inside values,
// characters of the ANSI code page), inserted out of key order so that
// "database order" and "key order" differ.
namespace UploadsFixture {

void addCompany(TestSite &site);
void addPortfolio(TestSite &site);
void addVendors(TestSite &site);
// Company, portfolio and vendors.
void addAll(TestSite &site);

} // namespace UploadsFixture
