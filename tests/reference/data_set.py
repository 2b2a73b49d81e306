"""The data set: reading, counting, and the elimination of columns that carry no information."""
import numpy as np

from text_files import CsvReader, measure, read_text


class DataSet:
    """Cells as 0/1 arrays: y, p, z, x hold the values, p_missing and x_missing the marks.

    Column 0 of z and x is the intercept. A missing cell keeps its mark for ever; its value is what
    imputation last put there.
    """

    def remove_columns(self, columns, console):
        console.log("Eliminating columns:")
        for c in columns:
            console.log("%s, %s" % (self.z_names[c], self.x_names[c]))
        keep = [j for j in range(self.variables) if j not in columns]
        self.z, self.x, self.x_missing = self.z[:, keep], self.x[:, keep], self.x_missing[:, keep]
        self.z_names = [self.z_names[j] for j in keep]
        self.x_names = [self.x_names[j] for j in keep]
        console.log("Number of variables: %d" % self.variables)
        self.count_non_missing(console)

    @property
    def records(self):
        return len(self.y)

    @property
    def variables(self):
        return len(self.x_names)

    def count_non_missing(self, console):
        self.incomplete = self.p_missing | self.x_missing.any(axis=1)
        complete_p0 = ~self.incomplete & ~self.p
        hospitals = len(self.hospital_ids)
        self.complete_count = int((~self.incomplete).sum())
        self.hospital_complete = np.bincount(self.hospital[~self.incomplete], minlength=hospitals)
        self.hospital_complete_p0 = np.bincount(self.hospital[complete_p0], minlength=hospitals)
        console.log("Counting non missing records:")
        console.log("Number of non-missing records: %d" % self.complete_count)
        console.log("Number of non-missing records with P = 0: %d" % complete_p0.sum())

    def prepare_imputation(self):
        """Every missing cell starts at 0."""
        self.x &= ~self.x_missing
        self.p &= ~self.p_missing


def read_data_file(path, indicators, console):
    data = DataSet()
    text = read_text(path)
    console.out("Reading data file...\n")
    fewest, most, lines = measure(text)
    assert fewest == most
    n = lines - 1
    covariates, odd = divmod(most - indicators - 3, 2)
    assert odd == 0 and covariates >= 0
    console.log("Number of records: %d" % n)
    console.log("Number of variables: %d" % (covariates + 1))

    reader = CsvReader(text)
    for _ in range(3 + indicators):
        reader.skip()
    names = [reader.next_field()[0] for _ in range(2 * covariates)]
    data.z_names = ["ZIntercept"] + names[:covariates]
    data.x_names = ["XIntercept"] + names[covariates:]

    console.out("Reading data...\n")
    data.hospital_ids = []
    y, p, z, x, hospital = [], [], [], [], []
    for i in range(n):
        reader.skip()
        identity = reader.next_field()[0]
        if i == 0 or identity != data.hospital_ids[-1]:
            console.out("Hospital: %s record: %d / %d\n" % (identity, i, n))
            data.hospital_ids.append(identity)
        hospital.append(len(data.hospital_ids) - 1)
        y.append(reader.bit())
        p.append([reader.ternary() for _ in range(indicators)])
        z.append([1] + [reader.bit() for _ in range(covariates)])
        x.append([1] + [reader.ternary() for _ in range(covariates)])
    assert reader.at_end()
    assert len(set(data.hospital_ids)) == len(data.hospital_ids)
    console.log("Number of hospitals: %d" % len(data.hospital_ids))

    data.hospital = np.array(hospital)
    data.y = np.array(y, dtype=bool)
    data.p = np.array([1 in cells for cells in p])
    data.p_missing = np.array([None in cells for cells in p])
    data.z = np.array(z, dtype=bool)
    data.x = np.array([[cell == 1 for cell in row] for row in x])
    data.x_missing = np.array([[cell is None for cell in row] for row in x])
    for i in range(n):
        if not data.p_missing[i] and not data.y[i] and data.p[i]:
            console.log("Warning: Y == 0 && P == 1 data in record: %d - setting P equal to 0" % i)
            data.p[i] = False
    data.hospital_size = np.bincount(data.hospital, minlength=len(data.hospital_ids))
    data.count_non_missing(console)
    return data


def row_echelon_columns(n):
    """Column order after Gaussian elimination with complete pivoting; first maximum wins a tie."""
    a = n.copy()
    rows, columns = a.shape
    order = list(range(columns))
    for s in range(min(rows, columns)):
        block = np.abs(a[s:, s:])
        i, j = np.unravel_index(np.argmax(block), block.shape)
        if not block[i, j] > 0:
            break
        i, j = i + s, j + s
        a[[s, i]] = a[[i, s]]
        a[:, [s, j]] = a[:, [j, s]]
        order[s], order[j] = order[j], order[s]
        a[s] = a[s] / a[s, s]
        for r in range(s + 1, rows):
            a[r] = a[r] - a[r, s] * a[s]
    return order


def dependent_columns(m, tolerance):
    """Columns of the square matrix m on which its null space depends most strongly."""
    _, values, vt = np.linalg.svd(m)
    null = vt[values <= tolerance * values.max()]
    k = len(null)
    if k == 0:
        return []
    null = null[:, 1:]  # the intercept is never chosen
    values = np.linalg.svd(null, compute_uv=False)
    assert (values > tolerance * values.max()).sum() == k
    return [c + 1 for c in row_echelon_columns(null)[:k]]


def is_full_rank(m, tolerance):
    values = np.linalg.svd(m, compute_uv=False)
    return bool((values > tolerance * values.max()).all())


def cross_counts(cells):
    cells = cells.astype(float)
    return cells.T @ cells


def eliminate_columns(data, tolerance, console):
    def eliminate_zero(cells):
        zero = [j for j in range(data.variables) if not cells[:, j].any()]
        if zero:
            data.remove_columns(zero, console)

    def eliminate_dependent(counts):
        columns = dependent_columns(counts(), tolerance)
        if columns:
            data.remove_columns(columns, console)
            console.out("Check rank\n")
            assert is_full_rank(counts(), tolerance)

    console.log("Eliminating Z zero columns")
    eliminate_zero(data.z)
    console.log("Eliminating X zero columns")
    eliminate_zero(data.x[~data.incomplete])
    console.log("Eliminating dependent Z columns")
    eliminate_dependent(lambda: cross_counts(data.z))
    console.log("Eliminating dependent X columns P = 0")
    eliminate_dependent(lambda: cross_counts(data.x[~data.incomplete & ~data.p]))
